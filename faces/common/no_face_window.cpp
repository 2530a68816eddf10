#include "faces/common/face_window.h"

namespace vantoric {

std::unique_ptr<FaceWindow> makeFaceWindow(PluggedInstrument&, const std::string&) { return nullptr; }

}  // namespace vantoric
