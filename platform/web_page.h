// Showing a page of the web to the user.
#pragma once

#include <string>

namespace vantoric::platform {

// Hands an address to the desktop's own opener and does not wait for it. False if there is none or it could not be
// started; whether a page comes up nobody knows. Any thread but the audio thread. `address` should be one of our own, never a
// user's text.
bool openWebPage(const std::string& address);

// The address of a file, "file:///...", for a path from the root; all bytes but plain letters, digits and "-._~/" are coded.
std::string addressOfFile(const std::string& path);

}  // namespace vantoric::platform
