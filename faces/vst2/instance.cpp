#include "faces/vst2/entry.h"
#include "faces/vst2/q7audio.h"
#include "faces/vst2/window_editor.h"

namespace vantoric {

AudioEffect* createEffectInstance(HostCallback host) {
    auto instance = std::make_unique<Q7Audio>(host);
    char product[textBufferSize] = {};
    instance->getHostProductString(product);
    if (auto window = makeFaceWindow(instance->plugged(), product))
        instance->setEditor(std::make_unique<WindowEditor>(std::move(window)));
    return instance.release();
}

}  // namespace vantoric
