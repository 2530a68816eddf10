#include "library/show_messages.h"

namespace vantoric {

void showMessages(Messages& messages, platform::Dialogs& dialogs) {
    for (const Message& message : messages.take()) dialogs.message(message.title, message.text);
}

}  // namespace vantoric
