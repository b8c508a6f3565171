// cfatool regs: defaults, check, diff, set, dump, doc.
#include <algorithm>
#include <fmt/core.h>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>

#include "tools/cfatool/base/files.h"
#include "tools/cfatool/base/json_text.h"
#include "tools/cfatool/base/suggestion.h"
#include "tools/cfatool/registers/ini_text.h"
#include "tools/cfatool/registers/regs_check.h"
#include "tools/cfatool/registers/regs_edit.h"
#include "tools/cfatool/registers/regs_text.h"
#include "tools/cfatool/subcommands.h"

namespace cfatool {
namespace {

// What the subcommands of regs take.
struct DefaultsOptions {
    std::string block, output;
};
struct CheckOptions {
    std::vector<std::string> files;
    bool unset = false, json = false;
};
struct DiffOptions {
    std::vector<std::string> files; // two
    bool json = false;
};
struct SetOptions {
    std::string file, output;
    std::vector<std::string> assignments;
};
struct DumpOptions {
    std::string file, from, block;
};
struct DocOptions {
    std::string output;
};

void write_text(const std::string &path, const std::string &text) {
    if (path.empty())
        std::cout << text;
    else
        write_whole_file(path, text);
}

/// The blocks that have registers, by name.
std::vector<std::string> block_names() {
    Registers registers;
    std::vector<std::string> names;
    for (const BlockPart &p : registers.parts())
        if (!p.table->registers.empty())
            names.emplace_back(p.table->name);
    return names;
}

const RegisterTable &table_of(const std::string &block) {
    Registers registers;
    for (const BlockPart &p : registers.parts())
        if (block == p.table->name && !p.table->registers.empty())
            return *p.table;
    throw CommandTrouble(fmt::format("unknown block '{}'{} (blocks: cfa, cmodel_top)", block,
                                     suggestion(block, block_names())));
}

void print_unset(const std::string &file, const UnsetRegisters &unset, bool with_names) {
    std::cout << fmt::format("{}: {} of {} registers of [{}] are left at their defaults{}\n", file,
                             unset.keys.size(), unset.registers, unset.section,
                             with_names || unset.keys.empty() ? "" : " (--unset names them)");
    for (const std::string &key : unset.keys)
        if (with_names)
            std::cout << "  " << key << "\n";
}

int check(const CheckOptions &options) {
    Json json = {{"findings", Json::array()}, {"unset", Json::array()}};
    for (const std::string &file : options.files) {
        const CheckResult result = check_registers(read_whole_file(file));
        for (const Finding &f : result.findings) {
            json["findings"].push_back({{"file", file}, {"line", f.line}, {"message", f.message}});
            if (!options.json)
                std::cout << fmt::format("{}:{}: {}\n", file, f.line, f.message);
        }
        for (const UnsetRegisters &u : result.unset) {
            json["unset"].push_back(
                {{"file", file}, {"section", u.section}, {"registers", u.registers}, {"unset", u.keys}});
            if (!options.json)
                print_unset(file, u, options.unset);
        }
    }
    if (options.json)
        std::cout << json_text(json) << "\n";
    return json["findings"].empty() ? STATUS_GOOD : STATUS_FOUND;
}

int diff(const DiffOptions &options) {
    Registers a, b;
    a.load(options.files[0]);
    b.load(options.files[1]);
    Json found = Json::array();
    const std::array<BlockPart, 4> parts_a = a.parts(), parts_b = b.parts();
    for (size_t i = 0; i < parts_a.size(); ++i) {
        for (const RegisterInfo &info : parts_a[i].table->registers) {
            const int32_t in_a = info.read(*parts_a[i].part), in_b = info.read(*parts_b[i].part);
            if (in_a == in_b)
                continue;
            found.push_back({{"key", info.key}, {"a", in_a}, {"b", in_b}, {"default", info.reset}});
            if (!options.json)
                std::cout << fmt::format("{}: {} against {}\n", info.key, in_a, in_b);
        }
    }
    if (options.json)
        std::cout << json_text(found) << "\n";
    return found.empty() ? STATUS_GOOD : STATUS_FOUND;
}

void set(const SetOptions &options) {
    const std::string &file = options.file;
    std::string bytes = read_whole_file(file);
    if (is_utf16(bytes))
        throw file_trouble(file, "UTF-16 text: none of it is read; save the file as plain text");
    for (const std::string &assignment : options.assignments)
        bytes = set_register(bytes, assignment);
    write_whole_file(options.output.empty() ? file : options.output, bytes);
}

void dump(const DumpOptions &options) {
    const std::string &file = options.file;
    const std::string source = options.from.empty() ? file : options.from;
    Registers registers;
    std::vector<std::string> blocks;
    if (!options.block.empty())
        blocks = {table_of(options.block).name};
    if (!options.from.empty() || readable(file)) {
        registers.load(source);
        for (const IniLine &line : read_ini_text(read_whole_file(source)))
            for (const std::string &name : block_names())
                if (options.block.empty() && line.section == name &&
                    std::find(blocks.begin(), blocks.end(), name) == blocks.end())
                    blocks.push_back(name);
    }
    if (blocks.empty())
        throw CommandTrouble(source + " has no section of a block; name one with --block");
    dump_registers(registers, blocks, file);
}

void defaults_command(Command &command) {
    const auto options = std::make_shared<DefaultsOptions>();
    command.word("BLOCK", options->block, "cfa or cmodel_top");
    command.text("-o", options->output, "FILE", "Write to this file instead of standard output");
    command.footer("Example: cfatool regs defaults cfa -o cfa.ini");
    command.run(options,
                [](const DefaultsOptions &o) { write_text(o.output, defaults_text(table_of(o.block))); });
}

void check_command(Command &command) {
    const auto options = std::make_shared<CheckOptions>();
    command.words("FILES", options->files, "INI files");
    command.flag("--unset", options->unset, "Name the registers that the file leaves at their defaults");
    command.flag("--json", options->json, "Print JSON");
    command.footer("Example: cfatool regs check cfa.ini cmodel_top.ini\n"
                   "Exit status: 0 nothing found, 1 something found, 2 trouble.");
    command.run(options, check);
}

void diff_command(Command &command) {
    const auto options = std::make_shared<DiffOptions>();
    command.words("FILES", options->files, "Two INI files", 2);
    command.flag("--json", options->json, "Print JSON");
    command.footer("Example: cfatool regs diff samples/cfa.ini cfa.ini\n"
                   "Exit status: 0 the same, 1 different, 2 trouble.");
    command.run(options, diff);
}

void set_command(Command &command) {
    const auto options = std::make_shared<SetOptions>();
    command.word("FILE", options->file, "The INI file");
    command.words("ASSIGNMENTS", options->assignments, "key=value, decimal, within the register's range");
    command.text("-o", options->output, "FILE", "Write here and leave FILE alone");
    command.footer("Example: cfatool regs set cfa.ini reg_cfa_shpn_enable=1 reg_cfa_shpn_gain_value=40");
    command.run(options, set);
}

void dump_command(Command &command) {
    const auto options = std::make_shared<DumpOptions>();
    command.word("FILE", options->file, "The INI file; other sections of it stay");
    command.text("--from", options->from, "FILE", "Take the values from this file instead of FILE");
    command.text("--block", options->block, "BLOCK",
                 "cfa or cmodel_top; otherwise the blocks that the file names");
    command.footer("Example: cfatool regs dump full.ini --from cfa.ini\n"
                   "The block's section is replaced whole, comments in it are lost.");
    command.run(options, dump);
}

void doc_command(Command &command) {
    const auto options = std::make_shared<DocOptions>();
    command.text("-o", options->output, "FILE", "Write to this file instead of standard output");
    command.footer("Example: cfatool regs doc -o docs/registers.md");
    command.run(options, [](const DocOptions &o) { write_text(o.output, reference_text()); });
}

constexpr Subcommand REGS_SUBCOMMANDS[] = {
    {"defaults", "Print a complete, annotated INI file of a block", defaults_command},
    {"doc", "Print the register reference as Markdown", doc_command},
    {"check", "Say what loading a file would accept without a word", check_command},
    {"diff", "Print the registers that differ once two files are loaded", diff_command},
    {"set", "Change registers in an INI file, leaving the rest as it is", set_command},
    {"dump", "Write every register value of a block into an INI file", dump_command},
};

} // namespace

void regs_command(Command &command) {
    command.choice(REGS_SUBCOMMANDS);
    command.footer("Example: cfatool regs check cfa.ini");
}

} // namespace cfatool
