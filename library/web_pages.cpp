#include "library/web_pages.h"

#include "platform/files.h"
#include "platform/module_folder.h"
#include "platform/web_page.h"

namespace vantoric {

std::string addressOf(WebPage page) {
    static constexpr const char* pages[] = {"", "sounds", "tutorial", "manual", "updates", "shop"};
    return std::string("https://www.vantoric.example/") + pages[static_cast<int>(page)];
}

namespace {
std::string manualFile() { return platform::bankFolder() + "Manual.html"; }
bool hasManualFile() { return platform::exists(manualFile()); }
}  // namespace

std::string addressOfManual() { return hasManualFile() ? platform::addressOfFile(manualFile()) : addressOf(WebPage::manual); }

std::string placeOfManual() { return hasManualFile() ? manualFile() : addressOf(WebPage::manual); }

}  // namespace vantoric
