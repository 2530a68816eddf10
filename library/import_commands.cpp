#include "library/import_commands.h"

#include "library/show_messages.h"
#include "platform/files.h"

namespace vantoric {

bool ImportCommands::told(bool result) {
    showMessages(messages_, dialogs_);
    return result;
}

void ImportCommands::importSample(Done done) {
    if (!platform::exists(QuickImport::sampleTemplate())) return done(false);
    chooser_.ask([this, done = std::move(done)](const auto& path) { done(path && told(quick_.importSample(*path))); });
}

void ImportCommands::importVocoder(Done done) {
    if (!platform::exists(QuickImport::vocoderTemplate())) return done(false);
    dialogs_.message("Hint", "Now select a speech sample or a drumline...");
    chooser_.ask([this, done = std::move(done)](const auto& path) { done(path && told(quick_.importVocoder(*path))); });
}

void ImportCommands::importSfz(const std::string& path, Done done) {
    std::optional<SfzFile> file = sfz_.readSfz(path);
    if (!file) return done(told(false));
    if (file->groups <= 1) return done(told(sfz_.importSfz(path, *file, SfzGroups::onlyFirst)));
    dialogs_.question("Warning",
                      "This *.sfz file is not supported and contains more than one <group>. Should all groups be merged?",
                      [this, path, file = std::move(*file), done = std::move(done)](bool isMerged) {
                          done(told(sfz_.importSfz(path, file, isMerged ? SfzGroups::merged : SfzGroups::onlyFirst)));
                      });
}

void ImportCommands::importSfzDialog(Done done) {
    platform::askFilePath(dialogs_, "", false, platform::FileKind::Sfz,
                          [this, done = std::move(done)](const auto& path) { path ? importSfz(*path, done) : done(false); });
}

}  // namespace vantoric
