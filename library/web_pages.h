// The maker's pages of the web.
#pragma once

#include <functional>
#include <string>

#include "platform/web_page.h"

namespace vantoric {

enum class WebPage { home, sounds, tutorial, manual, updates, shop };

// Its address.
std::string addressOf(WebPage page);

// The manual: the address of its file beside the wave banks if that was installed, else the page. Looks at each call.
std::string addressOfManual();
// The same as a user can find it: the file's path, or the address of the page.
std::string placeOfManual();

// Opens an address.
using PageOpener = std::function<platform::PageOpening(const std::string& address)>;

}  // namespace vantoric
