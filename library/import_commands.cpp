#include "library/import_commands.h"

#include <memory>
#include <utility>

#include "library/beside.h"
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

bool ImportCommands::hasTemplate(const std::string& path) {
    if (platform::exists(path)) return true;
    messages_.post("Error", "The factory sounds are missing. Please reinstall the software.");
    return told(false);
}

void ImportCommands::importSample(Done done) {
    if (!hasTemplate(QuickImport::sampleTemplate())) return done(false);
    chooseQuick(&QuickImport::readSample, &QuickImport::placeSample, std::move(done));
}

void ImportCommands::importVocoder(Done done) {
    if (!hasTemplate(QuickImport::vocoderTemplate())) return done(false);
    dialogs_.message("Hint", "Now select a speech sample or a drumline...");
    chooseQuick(&QuickImport::readVocoder, &QuickImport::placeVocoder, std::move(done));
}

void ImportCommands::chooseQuick(ReadQuick read, PlaceQuick place, Done done) {
    chooser_.ask([this, read, place, done = std::move(done)](const auto& path) {
        path ? readQuick(*path, read, place, done) : done(false);
    });
}

void ImportCommands::readQuick(const std::string& path, ReadQuick read, PlaceQuick place, Done done) {
    const auto reading = std::make_shared<QuickReading>();
    beside(
        dialogs_, "Importing", fileNameOf(path),
        [&quick = quick_, path, read, reading](Progress& progress) { *reading = (quick.*read)(path, &progress); },
        [this, path, place, reading, done = std::move(done)](bool isRead) {
            if (!isRead) return done(false);
            if (!reading->isWhole()) return done(told((quick_.*place)(std::move(*reading))));
            done(run(path, [&] { return (quick_.*place)(std::move(*reading)); }));
        });
}

void ImportCommands::importSfz(const std::string& path, Done done) {
    std::optional<SfzFile> file = sfz_.readSfz(path);
    if (!file) return done(told(false));
    if (file->groups <= 1) return readSfz(path, *file, SfzGroups::onlyFirst, std::move(done));
    dialogs_.choice("Warning",
                    "This *.sfz file is not supported and contains more than one <group>. Should all groups be merged?",
                    [this, path, file = std::move(*file), done = std::move(done)](std::optional<bool> isMerged) {
                        if (!isMerged) return done(false);
                        readSfz(path, file, *isMerged ? SfzGroups::merged : SfzGroups::onlyFirst, done);
                    });
}

void ImportCommands::readSfz(const std::string& path, const SfzFile& file, SfzGroups groups, Done done) {
    std::optional<SfzPlan> plan = sfz_.planImport(file, groups);
    if (!plan) return done(told(false));
    struct Reading {
        SfzPlan plan;
        std::vector<WaveReading> samples;
    };
    const auto reading = std::make_shared<Reading>(Reading{std::move(*plan), {}});
    beside(
        dialogs_, "Importing", fileNameOf(path),
        [&sfz = sfz_, path, reading](Progress& progress) { reading->samples = sfz.readSamples(path, reading->plan, &progress); },
        [this, path, reading, done = std::move(done)](bool isRead) {
            if (!isRead) return done(told(false));
            done(run(path, [&] { return sfz_.placeSfz(path, reading->plan, std::move(reading->samples)); }));
        });
}

void ImportCommands::importSfzDialog(Done done) {
    platform::askFilePath(dialogs_, "", false, platform::FileKind::Sfz,
                          [this, done = std::move(done)](const auto& path) { path ? importSfz(*path, done) : done(false); });
}

}  // namespace vantoric
