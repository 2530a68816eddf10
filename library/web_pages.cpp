#include "library/web_pages.h"

namespace vantoric {

std::string addressOf(WebPage page) {
    static constexpr const char* pages[] = {"", "sounds", "tutorial", "manual", "updates", "shop"};
    return std::string("https://www.vantoric.example/") + pages[static_cast<int>(page)];
}

}  // namespace vantoric
