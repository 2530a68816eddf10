// The maker's pages of the web.
#pragma once

#include <functional>
#include <string>

namespace vantoric {

enum class WebPage { home, sounds, tutorial, manual, updates, shop };

// Its address.
std::string addressOf(WebPage page);

// The manual: the file beside the wave banks if it was installed, else the page. Looks at each call.
std::string addressOfManual();

// Opens an address; false if that could not be tried.
using PageOpener = std::function<bool(const std::string& address)>;

}  // namespace vantoric
