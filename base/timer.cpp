// The timer: a thread that sleeps for a period that its caller sets, wakes at once when the period changes, and
// raises the flag when it is over. Period and flag are the two public cells; the lock makes one step of each change,
// so that an expiry from before a change can't count after it.
#include "base/timing.h"

#include <chrono>
#include <condition_variable>
#include <exception>
#include <memory>
#include <mutex>
#include <new>
#include <thread>

#include "base/log.h"
#include "platform/platform.h"

constinit AtomicInt global_timeout = 0;
constinit AtomicInt global_timeout_counter = -1;
constinit uint64_t global_timer = 0;

namespace
{

struct Timer {
    std::mutex lock;
    std::condition_variable wake;
    uint32_t changes = 0; // of the period, so that a wake-up without a change is slept over
    std::thread thread;
};

// Only a pointer stands in static storage: a program that exits while the thread runs destroys nothing under it.
constinit Timer *timer = nullptr;

void timer_thread(Timer *self)
{
    std::unique_lock hold(self->lock);
    for (;;) {
        const int32_t period = global_timeout_counter;
        if (period == 0) return;
        const auto changed = [self, seen = self->changes] { return self->changes != seen; };
        if (period < 0) {
            self->wake.wait(hold, changed);
        } else if (!self->wake.wait_for(hold, std::chrono::milliseconds(period), changed)) {
            global_timeout_counter = -1; // first, so that whoever sees the flag sees this too
            global_timeout = 1;
        }
    }
}

// The flag first, the period next, the wake-up last.
void change_period(int32_t milliseconds, int32_t flag)
{
    const std::lock_guard hold(timer->lock);
    global_timeout = flag;
    global_timeout_counter = milliseconds;
    ++timer->changes;
    timer->wake.notify_one();
}

bool start_thread()
{
    try {
        auto started = std::make_unique<Timer>();
        started->thread = std::thread(timer_thread, started.get());
        timer = started.release();
    } catch (const std::exception &) {
        return false;
    }
    return true;
}

} // namespace

int32_t create_timer(void)
{
    log_file(3, "Creating timer\n");
    if (timer != nullptr) {
        global_timeout = 0;
        log_file(3, "Timer already active\n");
        return 0;
    }
    global_timeout = 0;
    global_timeout_counter = -1;
    platform_keep_library();
    if (!start_thread()) return -1;
    global_timer = reinterpret_cast<uintptr_t>(timer);
    log_file(3, "Timer started\n");
    return 0;
}

void destroy_timer(void)
{
    log_file(3, "Stopping timer\n");
    if (timer == nullptr) {
        log_file(3, "Timer not running\n");
    } else {
        change_period(0, 0);
        timer->thread.join();
        delete timer;
        timer = nullptr;
        log_file(3, "Timer stopped\n");
    }
    global_timeout_counter = -1;
    global_timer = 0;
    global_timeout = 0;
}

int32_t set_timer(int32_t milliseconds)
{
    if (timer == nullptr) return -1;
    // No time at all is over at once; as a period, 0 would end the thread.
    if (milliseconds == 0)
        change_period(-1, 1);
    else
        change_period(milliseconds, 0);
    return 0;
}

int32_t clear_timer(void)
{
    if (timer == nullptr) return -1;
    change_period(-1, 0);
    return 0;
}
