#include "support/Sanitizer.h"

// The sanitizers' own interface (sanitizer/asan_interface.h and lsan_interface.h), null where they are not
// linked.
extern "C" {
[[gnu::weak]] void __asan_init();
[[gnu::weak]] void __lsan_disable();
[[gnu::weak]] void __lsan_enable();
}

namespace morvane {

bool isSanitized()
{
    return __asan_init != nullptr;
}

LeaksForgiven::LeaksForgiven()
{
    if (__lsan_disable)
        __lsan_disable();
}

LeaksForgiven::~LeaksForgiven()
{
    if (__lsan_enable)
        __lsan_enable();
}

} // namespace morvane
