// The maker's pages of the web, and the version of the instrument.
#pragma once

#include <functional>
#include <string>

namespace vantoric {

enum class WebPage { home, sounds, tutorial, manual, updates, shop };

// Its address.
std::string addressOf(WebPage page);

// The instrument's version: "3.3".
std::string versionText();

// Opens an address; false if that could not be tried.
using PageOpener = std::function<bool(const std::string& address)>;

}  // namespace vantoric
