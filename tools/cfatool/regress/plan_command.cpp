// cfatool regress plan: writes the lines of a plan.
#include <algorithm>
#include <filesystem>
#include <fmt/core.h>
#include <glob.h>
#include <iostream>
#include <memory>
#include <set>

#include "tools/cfatool/base/files.h"
#include "tools/cfatool/base/trouble.h"
#include "tools/cfatool/command_line.h"
#include "tools/cfatool/regress/commands.h"
#include "tools/cfatool/regress/plan.h"

namespace cfatool {
namespace {

namespace fs = std::filesystem;
using Texts = std::vector<std::string>;

struct PlanOptions {
    Texts pictures, registers, settings;
    std::string ids = "-", out;
    uint64_t random = 0;
    uint32_t seed = 0;
};

/// A file and what it is called in the names of cases.
struct Named {
    std::string name, path;
};

std::string without_extension(const fs::path &path) {
    return fs::path(path).replace_extension().string();
}

/// Files below a folder or of a pattern, called by the part of their path that the argument leaves open; a
/// single file by its own name.
std::vector<Named> files_of(const std::string &argument, const std::set<std::string> &extensions) {
    std::vector<Named> files;
    if (is_folder(argument)) {
        for (const auto &entry : fs::recursive_directory_iterator(argument))
            if (entry.is_regular_file() && extensions.contains(entry.path().extension()))
                files.push_back({without_extension(entry.path().lexically_relative(argument)), entry.path()});
    } else {
        const size_t open = argument.find_first_of("*?[");
        const fs::path fixed = fs::path(argument.substr(0, open)).parent_path();
        glob_t found = {};
        if (glob(argument.c_str(), 0, nullptr, &found) == 0)
            for (size_t i = 0; i < found.gl_pathc; ++i) {
                const fs::path path = found.gl_pathv[i];
                files.push_back(
                    {without_extension(fixed.empty() ? path : path.lexically_relative(fixed)), path});
            }
        globfree(&found);
    }
    if (files.empty())
        throw file_trouble(argument, "there is no such file");
    std::sort(files.begin(), files.end(), [](const Named &a, const Named &b) { return a.name < b.name; });
    return files;
}

std::vector<Named> files_of(const Texts &arguments, const std::set<std::string> &extensions) {
    std::vector<Named> all;
    for (const std::string &argument : arguments) {
        const std::vector<Named> files = files_of(argument, extensions);
        all.insert(all.end(), files.begin(), files.end());
    }
    return all;
}

/// Every way to take one value of each "key=1,2,3".
Texts variations(const Texts &settings) {
    Texts all = {""};
    for (const std::string &setting : settings) {
        const size_t equals = setting.find('=');
        if (equals == std::string::npos)
            throw UsageTrouble("--set: '" + setting + "' is not of the form key=value,value");
        Texts longer;
        for (const std::string &before : all)
            for (const std::string_view value : parts_of(std::string_view(setting).substr(equals + 1), ','))
                longer.push_back(fmt::format("{}{}{}{}", before, before.empty() ? "" : " ",
                                             setting.substr(0, equals + 1), value));
        all = longer;
    }
    return all;
}

/// A path as the plan has it: from its own folder on.
std::string from_plan(const std::string &path, const std::string &plan) {
    if (path == "-" || path.starts_with('/'))
        return path;
    return fs::proximate(path, fs::absolute(plan).parent_path()).string();
}

/// "reg_cfa_vw_thd=1 reg_img_bayerid=2" gives "/vw_thd=1/reg_img_bayerid=2".
std::string name_of_settings(const std::string &settings) {
    constexpr std::string_view PREFIX = "reg_cfa_";
    std::string name;
    for (const std::string_view setting : parts_of(settings, ' '))
        if (!setting.empty())
            name.append("/").append(setting.substr(setting.starts_with(PREFIX) ? PREFIX.size() : 0));
    return name;
}

/// Pictures x register files x settings x ids.
void add_products(const PlanOptions &options, std::string &text) {
    const auto pictures = files_of(options.pictures, {".ppm", ".pgm"});
    auto registers = files_of(options.registers, {".ini"});
    if (registers.empty())
        registers.push_back({"", "-"});
    for (const Named &picture : pictures)
        for (const Named &file : registers)
            for (const std::string &settings : variations(options.settings))
                for (const std::string_view part : parts_of(options.ids, ',')) {
                    const std::string id(part);
                    const std::string name = picture.name + (file.name.empty() ? "" : "/" + file.name) +
                                             name_of_settings(settings) + (id == "-" ? "" : "/id" + id);
                    text += plan_line({name, from_plan(picture.path, options.out),
                                       from_plan(file.path, options.out), id, settings});
                }
}

/// One in sixteen at limits, one in a thousand large.
void add_drawn(const PlanOptions &options, std::string &text) {
    for (uint64_t i = 0; i < options.random; ++i) {
        const uint64_t seed = options.seed + i;
        if (seed > UINT32_MAX)
            throw UsageTrouble("--seed: seeds end at 4294967295");
        const std::string number = std::to_string(seed);
        const bool limits = seed % 16 == 15, large = seed % 1000 == 500;
        const std::string registers = limits ? "limits:" + number : "random:" + number;
        const std::string raw = limits ? registers : (large ? "large:" : "random:") + number;
        text += plan_line({"random/" + number, raw, registers, "-", ""});
    }
}

void write_plan(const PlanOptions &options) {
    if (options.pictures.empty() && options.random == 0)
        throw UsageTrouble("--pictures or --random is needed");
    std::string text;
    add_products(options, text);
    add_drawn(options, text);
    const std::string beside = options.out + ".unchecked";
    write_whole_file(beside, text);
    try {
        std::cout << Plan(beside).size() << " cases\n";
    } catch (const Trouble &error) {
        fs::remove(beside);
        throw Trouble(options.out + std::string(error.what()).substr(beside.size()));
    }
    fs::rename(beside, options.out);
}

} // namespace

void regress_plan_command(Command &command) {
    const auto options = std::make_shared<PlanOptions>();
    command.texts("--pictures", options->pictures, "FILES",
                  "P5 pictures: a file, a pattern in quotes, a folder");
    command.texts("--registers", options->registers, "FILES", "Register files likewise (the defaults)");
    command.texts("--set", options->settings, "KEY=V,V", "Every case with each of these values");
    command.text("--bayer", options->ids, "N,N", "Pattern ids (what the register file says)");
    command.number("--random", options->random, 0, 100'000'000,
                   "As many drawn pictures with drawn registers");
    command.number("--seed", options->seed, 0, UINT32_MAX,
                   "Seed of the first drawn case, one more for each (0)");
    command.text("-o", options->out, "FILE", "The plan to write", Need::required);
    command.footer(
        "Example: cfatool regress plan --pictures 'raw/*.ppm' --registers regs/ --bayer 0,3 -o plan.tsv\n"
        "A line is a case, its picture, its registers, its id and settings, with tabs between.");
    command.run(options, write_plan);
}

} // namespace cfatool
