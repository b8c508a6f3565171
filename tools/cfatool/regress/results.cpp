#include "tools/cfatool/regress/results.h"

#include <chrono>
#include <cmath>
#include <filesystem>
#include <fmt/core.h>
#include <fstream>
#include <nlohmann/json.hpp>
#include <unistd.h>

#include "tools/cfatool/base/json_text.h"
#include "tools/cfatool/base/trouble.h"

namespace cfatool {
namespace {

using Status = Result::Status;

std::string host_name() {
    char name[256] = "";
    gethostname(name, sizeof name - 1);
    return name;
}

constexpr std::pair<const char *, std::string Result::*> TEXTS[] = {
    {"stage", &Result::stage}, {"kind", &Result::kind}, {"text", &Result::text}, {"kept", &Result::kept}};

const char *status_text(Status status) {
    return status == Status::pass ? "pass" : status == Status::fail ? "fail" : "error";
}

/// The name at the start of a line, unless it must be parsed for it.
std::optional<std::string_view> name_of(std::string_view line) {
    constexpr std::string_view START = R"({"case":")";
    const size_t end = line.find('"', START.size());
    if (!line.starts_with(START) || end == std::string_view::npos)
        return std::nullopt;
    const std::string_view name = line.substr(START.size(), end - START.size());
    return name.find('\\') == std::string_view::npos ? std::optional(name) : std::nullopt;
}

Result parsed(const std::string &line) {
    const Json json = Json::parse(line);
    Result result;
    result.name = json.at("case");
    const std::string status = json.at("result");
    result.status = status == "pass" ? Status::pass : status == "fail" ? Status::fail : Status::error;
    result.key = read_sum(json.at("key").get<std::string>());
    result.at = json.at("at");
    result.ms = json.at("ms");
    if (json.contains("sums"))
        result.sums = read_sums(json["sums"].get<std::string>());
    for (const auto &[name, text] : TEXTS)
        result.*text = json.value(name, "");
    return result;
}

} // namespace

std::string text_of(const std::exception &error) {
    return dynamic_cast<const std::bad_alloc *>(&error) != nullptr ? "not enough memory" : error.what();
}

int64_t milliseconds_now() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

ResultFile::ResultFile(const std::string &folder)
    : path_(fmt::format("{}/{}.{}.{}.jsonl", folder, host_name(), getpid(), milliseconds_now())),
      stream_(nullptr, &std::fclose) {}

void ResultFile::add(const Result &result) {
    if (!stream_)
        stream_.reset(std::fopen(path_.c_str(), "wbx"));
    if (!stream_)
        throw errno_trouble(path_);
    Json json = {{"case", result.name},
                 {"result", status_text(result.status)},
                 {"key", sum_text(result.key)},
                 {"at", result.at},
                 {"ms", std::round(result.ms * 1000) / 1000}};
    if (result.sums)
        json["sums"] = sums_text(*result.sums);
    for (const auto &[name, text] : TEXTS)
        if (!(result.*text).empty())
            json[name] = result.*text;
    const std::string line = json_text(json) + "\n";
    if (std::fwrite(line.data(), 1, line.size(), stream_.get()) != line.size() ||
        std::fflush(stream_.get()) != 0)
        throw errno_trouble(path_);
}

void read_results(const std::string &folder, const std::function<bool(std::string_view name)> &wanted,
                  const std::function<void(Result &&)> &take) {
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error), end; entry != end;
         entry.increment(error)) {
        if (entry->path().extension() != ".jsonl")
            continue;
        std::ifstream lines(entry->path());
        for (std::string line; std::getline(lines, line) && !lines.eof();) {
            const auto name = name_of(line);
            if (name && !wanted(*name))
                continue;
            try {
                take(parsed(line));
            } catch (const Json::exception &) { // a line that a killed process left unfinished
            } catch (const Trouble &) {         // or an odd sum
            }
        }
    }
    if (error)
        throw file_trouble(folder, error.message());
}

} // namespace cfatool
