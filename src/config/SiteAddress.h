#pragma once

namespace zav {

// Root of the maker's web site (update description, help pages), ending in "/".
inline constexpr const char* kDefaultBaseUrl = "https://www.zav-noise.org/";
// The address the site used to have; a stored copy of it is replaced by the current one.
inline constexpr const char* kFormerBaseUrl = "http://www.zav-noise.org/";

} // namespace zav
