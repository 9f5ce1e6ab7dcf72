// Preloaded into a program, moves its monotonic clock. By how many milliseconds stands as a 64-bit number in the
// file that $VELMORA_CLOCK_SHIFT names, and may change at any time.
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <ctime>

namespace {

using Function = int (*)(clockid_t, timespec *);

const volatile std::int64_t *openShift()
{
    const char *path = std::getenv("VELMORA_CLOCK_SHIFT");
    const int file = path == nullptr ? -1 : open(path, O_RDONLY | O_CLOEXEC);
    if (file < 0)
        return nullptr;
    void *page = mmap(nullptr, sizeof(std::int64_t), PROT_READ, MAP_SHARED, file, 0);
    close(file);
    return page == MAP_FAILED ? nullptr : static_cast<const volatile std::int64_t *>(page);
}

} // namespace

// NOLINTNEXTLINE(readability-inconsistent-declaration-parameter-name): the system's names are reserved ones.
extern "C" __attribute__((visibility("default"))) int clock_gettime(clockid_t clock, timespec *time) noexcept
{
    static const auto original = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "clock_gettime"));
    static const volatile std::int64_t *shift = openShift();
    const int result = original(clock, time);
    if (result == 0 && shift != nullptr && (clock == CLOCK_MONOTONIC || clock == CLOCK_MONOTONIC_COARSE)) {
        const std::int64_t moved = *shift;
        time->tv_sec += moved / 1000;
        time->tv_nsec += moved % 1000 * 1'000'000;
        if (time->tv_nsec >= 1'000'000'000) {
            ++time->tv_sec;
            time->tv_nsec -= 1'000'000'000;
        }
    }
    return result;
}
