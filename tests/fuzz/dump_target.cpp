// The registers written into any INI file that exists: the file then holds a section with every register, and
// no temporary file is left.

#include <filesystem>
#include <fstream>

#include <unistd.h>

#include "cmodel/cfa/src/reg_parse/cfa_reg.h"
#include "cmodel/cmodel_top/src/reg_parse/cmodel_top_reg.h"
#include "tests/fuzz/fuzz_support.h"

using namespace cfa;

namespace fs = std::filesystem;

namespace {

// A folder in memory where there is one; the fuzzer's own end does not remove it, so it bears the process.
const fs::path &folder() {
    static const fs::path path = [] {
        const fs::path base = fs::exists("/dev/shm") ? fs::path("/dev/shm") : fs::temp_directory_path();
        const fs::path made = base / ("cfa_fuzz_dump." + std::to_string(getpid()));
        fs::create_directories(made);
        std::atexit([] {
            std::error_code ignored;
            fs::remove_all(folder(), ignored);
        });
        return made;
    }();
    return path;
}

std::string section_text() {
    std::string text = std::string("[") + cfa_reg.hw.name + "]\n";
    for (const RegisterInfo &info : cfa_reg_hw_table().registers)
        text += std::string(info.key) + " = " + std::to_string(info.read(cfa_reg.hw)) + "\n";
    return text;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
    const std::string path = folder() / "registers.ini";
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char *>(bytes), static_cast<std::streamsize>(size));
    const int status = run_refusable([&] {
        INIT_CFA_REG("NULL");
        INIT_CMODEL_TOP_REG("NULL");
        LOAD_CFA_INI(path.c_str());
        DUMP_CFA_HW_INI(path.c_str());
        if (file_bytes(path).find(section_text()) == std::string::npos)
            fuzz_failure("the registers are not in the file");
        DUMP_CFA_SW_INI(
            path.c_str()); // takes a last line without line feed, glued to a header, for no header
        DUMP_CMODEL_TOP_INI(path.c_str());
    });
    if (status != 0)
        fuzz_failure("a dump ended the process");
    if (fs::exists(path + ".temp"))
        fuzz_failure("a temporary file is left");
    return 0;
}
