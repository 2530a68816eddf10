// Which patch of the lists is the one in force.
#pragma once

#include <cstdint>
#include <string>

#include "engine/instrument.h"
#include "library/patch_library.h"

namespace vantoric {

// On the thread of the window. A host may load a patch at any time; whoever shows the patch calls `follow` now and then.
class PatchOnShow {
public:
    // Both outlive it.
    PatchOnShow(Instrument& instrument, PatchLibrary& library) : instrument_(instrument), library_(library) {}

    // If a patch was loaded since the last look, its name is looked up in the lists.
    void follow();

    // Telling where the patch is that was just loaded or saved; loads up to now are known with it. Of the lists:
    void showListed(const std::string& category, const std::string& name);
    // A file anywhere: in the lists, if it lies there; else the selection goes to a patch of its name, if there is one,
    // but this is no patch of the lists. The lists are scanned anew.
    void showFile(const std::string& path);
    // Of no file. The second leaves the selection, from which steps go on.
    void showCustom();
    void showCustomHere();
    // One that was in force before and is again: where its file is, if it is still there, and the name that it had. The
    // selection goes there, or to a patch of that name.
    void showAgain(const std::string& category, const std::string& file, const std::string& name);
    // The same selection, of the patch in force.
    void select();
    // As it was before what was loaded.
    void keep();

    // The category; "Custom" if the patch is in no list.
    const std::string& category() const { return category_; }
    // The name of its file in the category's folder; empty if it is in no list.
    const std::string& file() const { return file_; }
    // The name: that of the file, unless the program was given another since.
    std::string name() const;

private:
    void show(const std::string& category, const std::string& name);

    Instrument& instrument_;
    PatchLibrary& library_;
    bool looked_ = false;
    std::uint32_t seen_ = 0;  // of the instrument's count of loads
    std::string category_ = customCategory;
    std::string file_, programName_;  // the file's name, and what the program was called then
};

}  // namespace vantoric
