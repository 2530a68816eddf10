// What the instrument is called, the same in every format.
#pragma once

namespace vantoric::identity {

inline constexpr char name[] = "Vantoric";
inline constexpr char vendor[] = "vantoric.example";
inline constexpr char homePage[] = "https://vantoric.example";
inline constexpr char description[] = "Four synthesizers of sixteen voices stacked in one";

}  // namespace vantoric::identity
