// A folder for what nobody keeps.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>

#include "tools/cfatool/base/trouble.h"

namespace cfatool {

/// A new folder in the system's place for temporary files; it disappears with the object.
struct ScratchFolder {
    std::string path;

    ScratchFolder() {
        std::error_code missing;
        path = (std::filesystem::temp_directory_path(missing) / "cfatool.XXXXXX").string();
        if (missing)
            throw CommandTrouble("no folder for temporary files, see TMPDIR: " + missing.message());
        if (mkdtemp(path.data()) == nullptr)
            throw errno_trouble(path);
    }
    ~ScratchFolder() {
        std::error_code error;
        std::filesystem::remove_all(path, error);
    }
    ScratchFolder(const ScratchFolder &) = delete;
    ScratchFolder &operator=(const ScratchFolder &) = delete;
};

} // namespace cfatool
