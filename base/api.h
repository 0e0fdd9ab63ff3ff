/* The mark of the public interface: TARVO_API stands before every exported function and table. */
#ifndef TARVO_BASE_API_H
#define TARVO_BASE_API_H

#if defined(_WIN32) && defined(TARVO_BUILD)
#define TARVO_API __declspec(dllexport)
#elif defined(_WIN32)
#define TARVO_API __declspec(dllimport)
#else
#define TARVO_API __attribute__((visibility("default")))
#endif

#endif
