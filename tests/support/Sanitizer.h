#pragma once

namespace morvane {

/// Whether AddressSanitizer watches this process. Asked while it runs, since the same objects are linked with
/// it and without.
bool isSanitized();

/// What is allocated while one of these lives is not looked for as a leak; without a sanitizer nothing.
class LeaksForgiven {
public:
    LeaksForgiven();
    ~LeaksForgiven();
    LeaksForgiven(const LeaksForgiven &) = delete;
    LeaksForgiven &operator=(const LeaksForgiven &) = delete;
};

} // namespace morvane
