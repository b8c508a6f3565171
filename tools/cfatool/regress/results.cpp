#include "tools/cfatool/regress/results.h"

#include <chrono>
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
    const auto text = [&json](const char *member) { return json.value(member, std::string()); };
    Result result;
    result.name = json.at("case");
    const std::string status = json.at("result");
    result.status = status == "pass" ? Status::pass : status == "fail" ? Status::fail : Status::error;
    result.key = read_sum(json.at("key").get<std::string>());
    result.at = json.at("at");
    result.ms = json.at("ms");
    if (json.contains("sums"))
        result.sums = {read_sum(json["sums"][0].get<std::string>()),
                       read_sum(json["sums"][1].get<std::string>()),
                       read_sum(json["sums"][2].get<std::string>())};
    result.stage = text("stage");
    result.kind = text("kind");
    result.text = text("text");
    result.kept = text("kept");
    return result;
}

} // namespace

const char *status_text(Status status) {
    return status == Status::pass ? "pass" : status == Status::fail ? "fail" : "error";
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
    std::string line =
        fmt::format(R"({{"case":{},"result":"{}","key":"{}","at":{},"ms":{:.3f})", json_text(result.name),
                    status_text(result.status), sum_text(result.key), result.at, result.ms);
    if (result.sums)
        line += fmt::format(R"(,"sums":["{}","{}","{}"])", sum_text((*result.sums)[0]),
                            sum_text((*result.sums)[1]), sum_text((*result.sums)[2]));
    const auto member = [&line](const char *name, const std::string &text) {
        if (!text.empty())
            line += fmt::format(R"(,"{}":{})", name, json_text(text));
    };
    member("stage", result.stage);
    member("kind", result.kind);
    member("text", result.text);
    member("kept", result.kept);
    line += "}\n";
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
            }
        }
    }
    if (error)
        throw file_trouble(folder, error.message());
}

} // namespace cfatool
