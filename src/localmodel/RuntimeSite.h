#pragma once

namespace morvane {

/// Where the runtime comes from: an origin, without a slash at the end.
inline constexpr char16_t runtimeSite[] = u"https://ollama.com";

} // namespace morvane
