// cfatool regs: defaults, check, diff, set, dump, doc.
#include <algorithm>
#include <iostream>
#include <memory>

#include "tools/cfatool/base/json.h"
#include "tools/cfatool/base/output_file.h"
#include "tools/cfatool/base/suggestion.h"
#include "tools/cfatool/command_line.h"
#include "tools/cfatool/registers/ini_text.h"
#include "tools/cfatool/registers/regs_check.h"
#include "tools/cfatool/registers/regs_edit.h"
#include "tools/cfatool/registers/regs_text.h"
#include "tools/cfatool/subcommands.h"

namespace cfatool {
namespace {

/// What the subcommands of regs take; each uses its own part.
struct RegsOptions {
    std::vector<std::string> files;
    std::vector<std::string> assignments;
    std::string file, block, from, output;
    bool unset = false, json = false;
};
using Options = std::shared_ptr<RegsOptions>;

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
    throw Trouble("cfatool regs: unknown block '" + block + "'" + suggestion(block, block_names()) +
                  " (blocks: cfa, cmodel_top)");
}

std::string finding_json(const std::string &file, const Finding &finding) {
    return json_list("{}",
                     {json_member("file", json_text(file)), json_member("line", std::to_string(finding.line)),
                      json_member("message", json_text(finding.message))});
}

std::string unset_json(const std::string &file, const UnsetRegisters &unset) {
    std::vector<std::string> keys;
    for (const std::string &key : unset.keys)
        keys.push_back(json_text(key));
    return json_list("{}",
                     {json_member("file", json_text(file)), json_member("section", json_text(unset.section)),
                      json_member("registers", std::to_string(unset.registers)),
                      json_member("unset", json_list("[]", keys))});
}

int check(const RegsOptions &options) {
    std::vector<std::string> findings, unset_list;
    for (const std::string &file : options.files) {
        const CheckResult result = check_registers(read_whole_file(file));
        for (const Finding &finding : result.findings) {
            findings.push_back(finding_json(file, finding));
            if (!options.json)
                std::cout << file << ":" << finding.line << ": " << finding.message << "\n";
        }
        for (const UnsetRegisters &unset : result.unset) {
            unset_list.push_back(unset_json(file, unset));
            if (options.json)
                continue;
            std::cout << file << ": " << unset.keys.size() << " of " << unset.registers << " registers of ["
                      << unset.section << "] are left at their defaults"
                      << (options.unset || unset.keys.empty() ? "" : " (--unset names them)") << "\n";
            for (const std::string &key : unset.keys)
                if (options.unset)
                    std::cout << "  " << key << "\n";
        }
    }
    if (options.json)
        std::cout << json_list("{}", {json_member("findings", json_list("[]", findings)),
                                      json_member("unset", json_list("[]", unset_list))})
                  << "\n";
    return findings.empty() ? STATUS_GOOD : STATUS_FOUND;
}

int diff(const RegsOptions &options) {
    Registers a, b;
    a.load(options.files[0]);
    b.load(options.files[1]);
    std::vector<std::string> found;
    const std::vector<BlockPart> parts_a = a.parts(), parts_b = b.parts();
    for (size_t i = 0; i < parts_a.size(); ++i) {
        for (const RegisterInfo &info : parts_a[i].table->registers) {
            const int32_t in_a = info.read(*parts_a[i].part), in_b = info.read(*parts_b[i].part);
            if (in_a == in_b)
                continue;
            found.push_back(json_list("{}", {json_member("key", json_text(info.key)),
                                             json_member("a", std::to_string(in_a)),
                                             json_member("b", std::to_string(in_b)),
                                             json_member("default", std::to_string(info.reset))}));
            if (!options.json)
                std::cout << info.key << ": " << in_a << " against " << in_b << "\n";
        }
    }
    if (options.json)
        std::cout << json_list("[]", found) << "\n";
    return found.empty() ? STATUS_GOOD : STATUS_FOUND;
}

void set(const RegsOptions &options) {
    const std::string &file = options.file;
    std::string bytes = read_whole_file(file);
    for (const std::string &assignment : options.assignments)
        bytes = set_register(bytes, assignment);
    write_whole_file(options.output.empty() ? file : options.output, bytes);
}

void dump(const RegsOptions &options) {
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
        throw Trouble("cfatool regs dump: " + source + " has no section of a block; name one with --block");
    dump_registers(registers, blocks, file);
}

void add_writers(CLI::App &regs) {
    const Options o = std::make_shared<RegsOptions>();
    CLI::App *app = regs.add_subcommand("defaults", "Print a complete, annotated INI file of a block");
    app->add_option("BLOCK", o->block, "cfa or cmodel_top")->type_name("")->required();
    app->add_option("-o", o->output, "Write to this file instead of standard output")->type_name("FILE");
    app->footer("Example: cfatool regs defaults cfa -o cfa.ini");
    app->callback([o] { write_text(o->output, defaults_text(table_of(o->block))); });

    const Options d = std::make_shared<RegsOptions>();
    app = regs.add_subcommand("doc", "Print the register reference as Markdown");
    app->add_option("-o", d->output, "Write to this file instead of standard output")->type_name("FILE");
    app->footer("Example: cfatool regs doc -o docs/registers.md");
    app->callback([d] { write_text(d->output, reference_text()); });
}

void add_checks(CLI::App &regs, int &status) {
    const Options c = std::make_shared<RegsOptions>();
    CLI::App *app = regs.add_subcommand("check", "Say what loading a file would accept without a word");
    app->add_option("FILES", c->files, "INI files")->type_name("")->required();
    app->add_flag("--unset", c->unset, "Name the registers that the file leaves at their defaults");
    app->add_flag("--json", c->json, "Print JSON");
    app->footer("Example: cfatool regs check cfa.ini cmodel_top.ini\n"
                "Exit status: 0 nothing found, 1 something found, 2 trouble.");
    app->callback([c, &status] { status = check(*c); });

    const Options d = std::make_shared<RegsOptions>();
    app = regs.add_subcommand("diff", "Print the registers that differ once two files are loaded");
    app->add_option("FILES", d->files, "Two INI files")->type_name("")->required()->expected(2);
    app->add_flag("--json", d->json, "Print JSON");
    app->footer("Example: cfatool regs diff samples/cfa.ini cfa.ini\n"
                "Exit status: 0 the same, 1 different, 2 trouble.");
    app->callback([d, &status] { status = diff(*d); });
}

void add_editors(CLI::App &regs) {
    const Options s = std::make_shared<RegsOptions>();
    CLI::App *app = regs.add_subcommand("set", "Change registers in an INI file, leaving the rest as it is");
    app->add_option("FILE", s->file, "The INI file")->type_name("")->required();
    app->add_option("ASSIGNMENTS", s->assignments, "key=value, decimal, within the register's range")
        ->type_name("")
        ->required();
    app->add_option("-o", s->output, "Write here and leave FILE alone")->type_name("FILE");
    app->footer("Example: cfatool regs set cfa.ini reg_cfa_shpn_enable=1 reg_cfa_shpn_gain_value=40");
    app->callback([s] { set(*s); });

    const Options d = std::make_shared<RegsOptions>();
    app = regs.add_subcommand("dump", "Write every register value of a block into an INI file");
    app->add_option("FILE", d->file, "The INI file; other sections of it stay")->type_name("")->required();
    app->add_option("--from", d->from, "Take the values from this file instead of FILE")->type_name("FILE");
    app->add_option("--block", d->block, "cfa or cmodel_top; otherwise the blocks that the file names")
        ->type_name("BLOCK");
    app->footer("Example: cfatool regs dump full.ini --from cfa.ini\n"
                "The block's section is replaced whole, comments in it are lost.");
    app->callback([d] { dump(*d); });
}

} // namespace

void add_regs(CLI::App &program, int &status) {
    CLI::App *regs = program.add_subcommand("regs", "Make, check, compare and change register files");
    regs->require_subcommand(1);
    regs->footer("Example: cfatool regs check cfa.ini");
    add_writers(*regs);
    add_checks(*regs, status);
    add_editors(*regs);
}

} // namespace cfatool
