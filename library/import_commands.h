// The commands that make a patch of files that the user chooses.
#pragma once

#include <string>

#include "library/command_log.h"
#include "library/done.h"
#include "library/wave_chooser.h"
#include "loading/quick_import.h"
#include "loading/sfz_import.h"
#include "platform/dialogs.h"

namespace vantoric {

// On the thread of the window. Every command shows what there is to tell and ends with `done`. One that fails or that the
// user leaves ends with the patch that was there before; nothing changes before the last answer. Outlives its questions.
class ImportCommands {
public:
    ImportCommands(QuickImport& quick, SfzImport& sfz, WaveChooser& chooser, Messages& messages, platform::Dialogs& dialogs,
                   CommandLog& log)
        : quick_(quick), sfz_(sfz), chooser_(chooser), messages_(messages), dialogs_(dialogs), log_(log) {}

    // Lets the user choose a wave file and makes a patch of it, see QuickImport. False if the template is missing, nothing
    // was chosen, or the file was refused. Files are read beside the window and can be cancelled meanwhile.
    void importSample(Done done);
    // The same for the vocoder, after a hint of what to choose.
    void importVocoder(Done done);

    // Makes a patch of an SFZ file, see SfzImport; several groups are a question.
    void importSfz(const std::string& path, Done done);
    // Lets the user choose a file first.
    void importSfzDialog(Done done);

private:
    using ReadQuick = QuickReading (QuickImport::*)(const std::string&, Progress*) const;
    using PlaceQuick = bool (QuickImport::*)(QuickReading&&);
    void chooseQuick(ReadQuick read, PlaceQuick place, Done done);
    void readQuick(const std::string& path, ReadQuick read, PlaceQuick place, Done done);
    void readSfz(const std::string& path, const SfzFile& file, SfzGroups groups, Done done);
    bool hasTemplate(const std::string& path);
    // Runs the end of an import as a command, and tells.
    template <class Import>
    bool run(const std::string& path, Import&& import);
    bool told(bool result);

    QuickImport& quick_;
    SfzImport& sfz_;
    WaveChooser& chooser_;
    Messages& messages_;
    platform::Dialogs& dialogs_;
    CommandLog& log_;
};

}  // namespace vantoric
