/* What starting a process costs, with nothing in it. */
int main(void)
{
    return 0;
}
