// Another program, as a child of its own for every case.
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fmt/core.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "tools/cfatool/base/files.h"
#include "tools/cfatool/base/trouble.h"
#include "tools/cfatool/regress/makers.h"

namespace cfatool {
namespace {

namespace fs = std::filesystem;

std::string quoted(const std::string &text) {
    std::string all = "'";
    for (const char c : text)
        all += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return all + "'";
}

/// The command line with every {word} replaced; files stand in `folder`.
std::string command_line(const std::string &command, const std::string &folder, bool debug) {
    std::string line = command;
    const auto replace = [&line](const std::string &word, const std::string &by) {
        for (size_t at = 0; (at = line.find(word, at)) != std::string::npos; at += by.size())
            line.replace(at, word.size(), by);
    };
    constexpr const char *FILES[][2] = {
        {"{ini}", "/cfa.ini"},   {"{top}", "/cmodel_top.ini"}, {"{raw}", "/raw.ppm"}, {"{rgb}", "/out.ppm"},
        {"{dc}", "/out_dc.ppm"}, {"{gain}", "/out_sg.ppm"},    {"{log}", "/cfa.log"}, {"{dbg}", ""},
        {"{folder}", ""}};
    for (const auto &[word, file] : FILES)
        replace(word, quoted(folder + file));
    replace("{debug}", debug ? "1" : "0");
    return line;
}

/// Becomes the program. What it prints goes to said.txt.
[[noreturn]] void become(const std::string &line, const std::string &folder) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const int null = open("/dev/null", O_RDONLY);
    const int said = open((folder + "/said.txt").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
    dup2(null, 0);
    dup2(said, 1);
    dup2(said, 2);
    execl("/bin/sh", "sh", "-c", line.c_str(), nullptr);
    _exit(127);
}

class Program : public OutputMaker {
  public:
    Program(const std::string &command, const std::string &scratch) : scratch_(scratch) {
        if (command.find('{') != std::string::npos) {
            command_ = command;
            identity_ = sum_of_text(command);
            return;
        }
        if (access(command.c_str(), X_OK) != 0)
            throw errno_trouble(command);
        identity_ = sum_of_file(command);
        command_ = "exec " + quoted(fs::absolute(command).string()) +
                   " {ini} {log} 5 {debug} {dbg} {top} {raw} {rgb} {dc} {gain}";
    }

    Sum identity(const Case &) const override { return identity_; }

    OutputSums make(const Inputs &inputs) override {
        const std::string folder = fmt::format("{}/{}", scratch_, getpid());
        fs::create_directories(folder);
        run(inputs, folder, false);
        try {
            return sums_of_outputs(folder);
        } catch (const Trouble &error) { // without the name of the scratch folder
            throw Trouble(std::string(error.what()).substr(folder.size() + 1));
        }
    }

    bool make_files(const Inputs &inputs, const std::string &folder, bool debug) override {
        run(inputs, folder, debug);
        return true;
    }

    std::string call() const override { return command_line(command_, ".", false); }

  private:
    void run(const Inputs &inputs, const std::string &folder, bool debug) const {
        write_inputs(inputs, folder);
        for (const char *file : OUTPUT_FILES) // what the case before has left
            unlink((folder + "/" + file).c_str());
        const pid_t child = fork();
        if (child < 0)
            throw CommandTrouble("no process can be started");
        if (child == 0)
            become(command_line(command_, folder, debug), folder);
        int status = 0;
        while (waitpid(child, &status, 0) < 0 && errno == EINTR)
            ;
        if (WIFSIGNALED(status))
            throw Trouble(fmt::format("ended by signal {}", WTERMSIG(status)));
        if (WEXITSTATUS(status) != 0)
            throw Trouble(fmt::format("ended with status {}: {}", WEXITSTATUS(status), said(folder)));
    }

    static std::string said(const std::string &folder) {
        const std::string text = read_whole_file(folder + "/said.txt");
        return text.substr(0, std::min<size_t>(text.find('\n'), 200));
    }

    std::string command_, scratch_;
    Sum identity_;
};

} // namespace

std::unique_ptr<OutputMaker> make_program(const std::string &command, const std::string &scratch) {
    return std::make_unique<Program>(command, scratch);
}

} // namespace cfatool
