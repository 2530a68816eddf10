#include "library/import_commands.h"

#include "library/show_messages.h"
#include "platform/files.h"

namespace vantoric {

bool ImportCommands::told(bool result) {
    showMessages(messages_, dialogs_);
    return result;
}

bool ImportCommands::importSample() {
    std::string path;
    return platform::exists(QuickImport::sampleTemplate()) && chooser_.ask(path) && told(quick_.importSample(path));
}

bool ImportCommands::importVocoder() {
    if (!platform::exists(QuickImport::vocoderTemplate())) return false;
    dialogs_.message("Hint", "Now select a speech sample or a drumline...");
    std::string path;
    return chooser_.ask(path) && told(quick_.importVocoder(path));
}

bool ImportCommands::importSfz(const std::string& path) {
    const std::optional<SfzFile> file = sfz_.readSfz(path);
    if (!file) return told(false);
    const bool isMerged = file->groups > 1 && dialogs_.question("Warning",
                                                                "This *.sfz file is not supported and contains more than one "
                                                                "<group>. Should all groups be merged?");
    return told(sfz_.importSfz(path, *file, isMerged ? SfzGroups::merged : SfzGroups::onlyFirst));
}

bool ImportCommands::importSfzDialog() {
    std::string path;
    return platform::askFilePath(dialogs_, path, "", false, platform::FileKind::Sfz) && importSfz(path);
}

}  // namespace vantoric
