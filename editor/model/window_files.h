// The small files that keep how the window is set up. A missing file means the default in every case. For the window's
// thread.
#pragma once

#include <optional>
#include <string>

#include "platform/dialogs.h"

namespace vantoric {

// Number of window sizes.
inline constexpr int editorSizeCount = 18;

// The paths, below the data folder as it is at the time of the call.
std::string sizeFilePath();
std::string tooltipsFilePath();
std::string hideEditorFilePath();
std::string deallocFilePath();

// The stored window size: its one byte, held to 0 to 17. Nothing if there is no file or it is empty.
std::optional<int> readSizeIndex();

// The size for a first start, by the primary screen in pixels and the host's product string (null counts
// as empty). 0 if no screen is known (sizes of 0).
int sizeIndexForScreen(int screenWidth, int screenHeight, const char* hostProduct);

// The stored size, or the one for the screen.
int startSizeIndex(int screenWidth, int screenHeight, const char* hostProduct);

// Stores the size. On failure shows the write error box and returns false.
bool writeSizeIndex(int index, platform::Dialogs& dialogs);

// Whether tooltips are switched off.
bool tooltipsHidden();

// Shows tooltips if they were hidden and the other way round, from the editor's next opening on, and tells
// the user; shows the write error box if the file cannot be made or removed.
void toggleTooltips(platform::Dialogs& dialogs);

// Flags for hosts that need them, set by the user with a file and never by the program.
bool hideEditorRequested();
bool deallocRequested();

}  // namespace vantoric
