// The maker's pages of the web.
#pragma once

#include <functional>
#include <string>

namespace vantoric {

enum class WebPage { home, sounds, tutorial, manual, updates, shop };

// Its address.
std::string addressOf(WebPage page);

// The manual: the address of its file beside the wave banks if that was installed, else the page. Looks at each call.
std::string addressOfManual();
// The same as a user can find it: the file's path, or the address of the page.
std::string placeOfManual();

// Opens an address; false if that could not be tried.
using PageOpener = std::function<bool(const std::string& address)>;

}  // namespace vantoric
