// The pages of the web that the window can open, in the user's browser.
#pragma once

namespace vantoric::web {

inline constexpr const char* home = "https://www.vantoric.example/";
inline constexpr const char* sounds = "https://www.vantoric.example/sounds";
inline constexpr const char* tutorial = "https://www.vantoric.example/tutorial";
inline constexpr const char* manual = "https://www.vantoric.example/manual";
inline constexpr const char* updates = "https://www.vantoric.example/updates";

}  // namespace vantoric::web
