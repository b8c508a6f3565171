// cfatool view: the page served to a browser of this machine.
#include "tools/cfatool/subcommands.h"

#ifdef CFATOOL_HAS_HTTPLIB
#include <atomic>
#include <csignal>
#include <fmt/core.h>
#include <httplib.h>
#include <iostream>
#include <nlohmann/json.hpp>
#include <random>
#include <thread>

#include "tools/cfatool/page/pyramid_cache.h"
#endif

namespace cfatool {
namespace {

struct ViewOptions {
    std::string run, other;
    int port = 0;
    bool open = false;
};

#ifdef CFATOOL_HAS_HTTPLIB

constexpr size_t CACHE_BYTES = size_t{512} << 20;
constexpr size_t WORKERS = 16; // a connection keeps one while it is open; browsers have six

constexpr int PATIENCE = 5; // questions for the verdict, if no tile is asked for

/// 128 random bits.
std::string new_token() {
    std::random_device random;
    return fmt::format("{:08x}{:08x}{:08x}{:08x}", random(), random(), random(), random());
}

/// Answers requests for what belongs to the runs, and no others. Planes are named by their numbers.
class View {
  public:
    explicit View(const ViewOptions &options)
        : runs_(options.run, options.other), cache_(runs_, CACHE_BYTES), token_(new_token()) {
        server_.new_task_queue = [] { return new httplib::ThreadPool(WORKERS); };
        server_.set_tcp_nodelay(true);
        server_.set_keep_alive_max_count(1'000'000);
        server_.set_default_headers(
            {{"Cache-Control", "no-store"},
             {"Content-Security-Policy",
              "default-src 'none'; script-src 'unsafe-inline'; style-src 'unsafe-inline'; "
              "connect-src 'self'; img-src data:; frame-ancestors 'none'"},
             {"Cross-Origin-Resource-Policy", "same-origin"},
             {"Referrer-Policy", "no-referrer"},
             {"X-Content-Type-Options", "nosniff"}});
        server_.set_pre_routing_handler(
            [this](const auto &request, auto &response) { return admit(request, response); });
        server_.set_exception_handler([](const auto &, auto &response, const std::exception_ptr &thrown) {
            response.status = 500;
            try {
                std::rethrow_exception(thrown);
            } catch (const std::exception &error) {
                response.set_content(error.what(), "text/plain");
            }
        });
        serve();
    }

    /// Returns only when it cannot listen.
    void run(const ViewOptions &options) {
        const bool bound = options.port == 0 ? (port_ = server_.bind_to_any_port("127.0.0.1")) > 0
                                             : server_.bind_to_port("127.0.0.1", port_ = options.port);
        if (!bound)
            throw CommandTrouble(fmt::format("port {} of 127.0.0.1 cannot be used", options.port));
        for (const int ends : {SIGINT, SIGHUP, SIGTERM}) // whatever the program that started this one ignores
            std::signal(ends, SIG_DFL);
        const std::string address = fmt::format("http://127.0.0.1:{}/{}/", port_, token_);
        std::cout << address << std::endl;
        if (options.open && std::system(("xdg-open " + address + " >/dev/null 2>&1 &").c_str()) != 0)
            std::cerr << "no browser could be opened\n";
        server_.listen_after_bind();
    }

  private:
    using Handled = httplib::Server::HandlerResponse;

    /// A name that leads here from another origin's page, or an address without the token, sees nothing.
    Handled admit(const httplib::Request &request, httplib::Response &response) const {
        const std::string host = request.get_header_value("Host");
        const std::string name = host.substr(0, host.find(':'));
        if ((name == "127.0.0.1" || name == "localhost") && request.path.starts_with("/" + token_ + "/"))
            return Handled::Unhandled;
        response.status = 403;
        response.set_content("refused\n", "text/plain");
        return Handled::Handled;
    }

    void serve() {
        server_.Get("/" + token_ + "/", [this](const auto &, auto &response) {
            response.set_content(page_text(runs_.manifest("served"), ""), "text/html; charset=utf-8");
        });
        server_.Get("/" + token_ + "/verdict", [this](const auto &, auto &response) {
            if (++asked_ > PATIENCE)
                compare_once();
            const std::lock_guard lock(mutex_);
            response.set_content(verdict_, "application/json");
        });
        server_.Get("/" + token_ + R"(/summary/(\d{1,4})-([abd]))", [this](const auto &request,
                                                                           auto &response) {
            if (const auto [plane, side] = named(request); plane != nullptr)
                response.set_content(
                    json_text(summary_json(cache_.get(place(plane), side)->summary, plane->form().channels)),
                    "application/json");
            else
                response.status = 404;
        });
        server_.Get("/" + token_ + R"(/tile/(\d{1,4})-([abd])-(\d{1,2})-(\d{1,6})-(\d{1,6}))",
                    [this](const auto &request, auto &response) {
                        if (const std::string bytes = tile(request); !bytes.empty())
                            response.set_content(bytes, "application/octet-stream");
                        else
                            response.status = 404;
                        compare_once();
                    });
    }

    size_t place(const PagePlane *plane) const { return static_cast<size_t>(plane - runs_.planes().data()); }

    /// The plane that a request names, null if there is none, or not on this side.
    std::pair<const PagePlane *, Side> named(const httplib::Request &request) const {
        const size_t plane = std::stoul(request.matches[1]);
        const Side side = request.matches[2] == "a"   ? Side::a
                          : request.matches[2] == "b" ? Side::b
                                                      : Side::difference;
        const bool there = plane < runs_.planes().size() && runs_.planes()[plane].has(side);
        return {there ? &runs_.planes()[plane] : nullptr, side};
    }

    /// Empty for a tile that does not exist.
    std::string tile(const httplib::Request &request) {
        const auto [plane, side] = named(request);
        const int level = std::stoi(request.matches[3]), column = std::stoi(request.matches[4]),
                  row = std::stoi(request.matches[5]);
        if (plane == nullptr || (level == 0 && side == Side::difference))
            return "";
        if (level == 0)
            return column < tiles_along(plane->form().width) && row < tiles_along(plane->form().height)
                       ? read_tile(*plane, side, column, row)
                       : "";
        const PyramidCache::Shared pyramid = cache_.get(place(plane), side);
        if (level > static_cast<int>(pyramid->levels.size()))
            return "";
        const PyramidLevel &cells = pyramid->levels[static_cast<size_t>(level) - 1];
        const bool there = column < tiles_along(cells.width) && row < tiles_along(cells.height);
        return there ? level_tile(*pyramid, level, column, row) : "";
    }

    /// Begins to compare the runs: behind the first tile, so that a picture comes first.
    void compare_once() {
        if (runs_.two())
            std::call_once(comparing_, [this] { std::thread([this] { compare(); }).detach(); });
    }

    void compare() {
        Json verdict;
        try {
            verdict = runs_.verdict();
        } catch (const std::exception &error) {
            verdict = {{"headline", error.what()}, {"stages", Json::object()}, {"planes", Json::array()}};
        }
        const std::lock_guard lock(mutex_);
        verdict_ = json_text(verdict);
    }

    const PageRuns runs_;
    PyramidCache cache_;
    const std::string token_;
    int port_ = 0;
    httplib::Server server_;
    std::atomic<int> asked_ = 0; // for the verdict
    std::once_flag comparing_;
    std::mutex mutex_;
    std::string verdict_ = "null"; // until it is known
};

void run(const ViewOptions &options) {
    View(options).run(options);
}

#else

void run(const ViewOptions &) {
    throw CommandTrouble(
        "built without cpp-httplib (libcpp-httplib-dev); cfatool report makes the same page as files");
}

#endif

} // namespace

void view_command(Command &command) {
    const auto options = std::make_shared<ViewOptions>();
    command.word("RUN", options->run, "Folder of the run");
    command.word("OTHER", options->other, "Folder of a run to compare it with", Need::optional);
    command.number("--port", options->port, 1, 65535, "Port to listen on (any free one)");
    command.flag("--open", options->open, "Open the page in the browser");
    command.footer("Example: cfatool view run/ rtl_run/\n"
                   "Prints the address of the page; Ctrl-C ends it. It can be reached from this machine "
                   "alone, and only\n"
                   "with the token in the address. From elsewhere: ssh -L 8000:127.0.0.1:8000 HOST cfatool "
                   "view RUN --port 8000");
    command.run(options, run);
}

} // namespace cfatool
