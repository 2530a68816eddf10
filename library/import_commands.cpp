#include "library/import_commands.h"

#include "library/show_messages.h"
#include "platform/files.h"

namespace vantoric {

bool ImportCommands::told(bool result) {
    showMessages(messages_, dialogs_);
    return result;
}

template <class Import>
bool ImportCommands::run(const std::string& path, Import&& import) {
    bool isDone = false;
    {
        const CommandLog::Running running(log_, "Import '" + patchNameOfPath(path) + "'");
        isDone = import();
    }
    return told(isDone);
}

void ImportCommands::importSample(Done done) {
    if (!platform::exists(QuickImport::sampleTemplate())) return done(false);
    chooser_.ask([this, done = std::move(done)](const auto& path) {
        done(path && run(*path, [&] { return quick_.importSample(*path); }));
    });
}

void ImportCommands::importVocoder(Done done) {
    if (!platform::exists(QuickImport::vocoderTemplate())) return done(false);
    dialogs_.message("Hint", "Now select a speech sample or a drumline...");
    chooser_.ask([this, done = std::move(done)](const auto& path) {
        done(path && run(*path, [&] { return quick_.importVocoder(*path); }));
    });
}

void ImportCommands::importSfz(const std::string& path, Done done) {
    std::optional<SfzFile> file = sfz_.readSfz(path);
    if (!file) return done(told(false));
    if (file->groups <= 1) return done(run(path, [&] { return sfz_.importSfz(path, *file, SfzGroups::onlyFirst); }));
    dialogs_.question("Warning",
                      "This *.sfz file is not supported and contains more than one <group>. Should all groups be merged?",
                      [this, path, file = std::move(*file), done = std::move(done)](bool isMerged) {
                          const SfzGroups groups = isMerged ? SfzGroups::merged : SfzGroups::onlyFirst;
                          done(run(path, [&] { return sfz_.importSfz(path, file, groups); }));
                      });
}

void ImportCommands::importSfzDialog(Done done) {
    platform::askFilePath(dialogs_, "", false, platform::FileKind::Sfz,
                          [this, done = std::move(done)](const auto& path) { path ? importSfz(*path, done) : done(false); });
}

}  // namespace vantoric
