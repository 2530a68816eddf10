#include "library/web_pages.h"

#include "platform/files.h"
#include "platform/module_folder.h"
#include "platform/web_page.h"

namespace vantoric {

std::string addressOf(WebPage page) {
    static constexpr const char* pages[] = {"", "sounds", "tutorial", "manual", "updates", "shop"};
    return std::string("https://www.vantoric.example/") + pages[static_cast<int>(page)];
}

std::string addressOfManual() {
    const std::string path = platform::bankFolder() + "Manual.html";
    return platform::exists(path) ? platform::addressOfFile(path) : addressOf(WebPage::manual);
}

}  // namespace vantoric
