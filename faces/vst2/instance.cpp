#include "faces/vst2/entry.h"
#include "faces/vst2/q7audio.h"
#ifdef VANTORIC_WINDOW
#include "editor/model/window_files.h"
#include "faces/vst2/window_editor.h"
#endif

namespace vantoric {

AudioEffect* createEffectInstance(HostCallback host) {
    auto instance = std::make_unique<Q7Audio>(host);
#ifdef VANTORIC_WINDOW
    char product[textBufferSize] = {};
    instance->getHostProductString(product);
    if (!hideEditorRequested())
        instance->setEditor(std::make_unique<WindowEditor>(instance->instrument(), instance->programLoader(), product));
#endif
    return instance.release();
}

}  // namespace vantoric
