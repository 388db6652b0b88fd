#include "can-service-sim/panel/PanelServer.h"

#include <httplib.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <thread>
#include <utility>
#include <vector>

#include "can-service-sim/panel/PageFiles.h"
#include "can-service-sim/panel/RequestGuard.h"
#include "desk/BadInput.h"
#include "sync/Mutex.h"

namespace qvn::tools {
namespace {

constexpr std::size_t kMostPages = 32;  // each holds a thread
constexpr std::size_t kThreads = kMostPages + 8;
constexpr std::size_t kLongestLine = 4096;
constexpr time_t kSecondsToRead = 2;
constexpr time_t kSecondsToWrite = 5;

constexpr char kText[] = "text/plain; charset=utf-8";

// The page takes nothing from elsewhere, and nobody puts it into a frame.
const httplib::Headers kHeaders = {
    {"Content-Security-Policy",
     "default-src 'none'; script-src 'self'; style-src 'self'; connect-src 'self'; img-src 'self'; base-uri 'none'; "
     "form-action 'none'; frame-ancestors 'none'"},
    {"X-Content-Type-Options", "nosniff"},
    {"Referrer-Policy", "no-referrer"},
    {"Cache-Control", "no-store"},
};

void reply(httplib::Response& response, int status, const std::string& text) {
    response.status = status;
    response.set_content(text.empty() || text.back() == '\n' ? text : text + "\n", kText);
}

std::string reasonOf(int status) {
    switch (status) {
        case 404:
            return "nothing is here; the panel is at /, its events at /events, and /line takes lines by POST";
        case 413:
            return "the request is too long";
        case 414:
            return "the path is too long";
        default:
            return "the request is no proper HTTP";
    }
}

std::string ownHostName() {
    char name[256] = "";
    gethostname(name, sizeof name - 1);
    return name;
}

}  // namespace

class PanelServer::Server {
public:
    explicit Server(Handlers handlers);
    ~Server();

    bool listen(const std::string& address, int port, std::string* error);
    int port() const { return port_; }

private:
    httplib::Server::HandlerResponse guard(const httplib::Request& request, httplib::Response& response) const;
    void takeLine(const httplib::Request& request, httplib::Response& response) const;
    void openPage(httplib::Response& response);
    std::shared_ptr<PageStream> newPage();

    const Handlers handlers_;
    const std::string hostName_ = ownHostName();
    httplib::Server http_;
    int port_ = 0;
    std::atomic<bool> ended_{false};  // the thread
    std::thread thread_;
    sync::Mutex mutex_;
    std::vector<std::weak_ptr<PageStream>> pages_ QVN_GUARDED_BY(mutex_);
    bool closing_ QVN_GUARDED_BY(mutex_) = false;
};

PanelServer::Server::Server(Handlers handlers) : handlers_(std::move(handlers)) {
    http_.new_task_queue = [] { return new httplib::ThreadPool(kThreads); };
    // Not the library's own choice, by which two programs may share a port.
    http_.set_socket_options([](socket_t socket) {
        const int yes = 1;
        setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    });
    http_.set_tcp_nodelay(true);
    // A connection that waits for a next request would hold a thread.
    http_.set_keep_alive_max_count(1);
    http_.set_read_timeout(kSecondsToRead);
    http_.set_write_timeout(kSecondsToWrite);
    http_.set_payload_max_length(kLongestLine);
    http_.set_default_headers(kHeaders);
    http_.set_pre_routing_handler([this](const auto& request, auto& response) { return guard(request, response); });
    http_.set_error_handler([](const httplib::Request&, httplib::Response& response) {
        if (response.body.empty()) {
            reply(response, response.status, reasonOf(response.status));
        }
    });
    for (const PageFile& file : pageFiles()) {
        http_.Get(file.path, [&file](const httplib::Request&, httplib::Response& response) {
            response.set_content(file.content.data(), file.content.size(), file.type);
        });
    }
    http_.Get("/events", [this](const httplib::Request&, httplib::Response& response) { openPage(response); });
    http_.Post("/line", [this](const auto& request, auto& response) { takeLine(request, response); });
}

PanelServer::Server::~Server() {
    {
        const sync::MutexLock lock(mutex_);
        closing_ = true;
        for (const std::weak_ptr<PageStream>& known : pages_) {
            if (const std::shared_ptr<PageStream> page = known.lock()) {
                page->end();
            }
        }
    }
    if (thread_.joinable()) {
        http_.stop();
        thread_.join();
    }
}

bool PanelServer::Server::listen(const std::string& address, int port, std::string* error) {
    errno = 0;
    port_ = port == 0 ? http_.bind_to_any_port(address) : (http_.bind_to_port(address, port) ? port : -1);
    if (port_ < 0) {
        const bool taken = errno == EADDRINUSE;
        *error = "the panel cannot listen at " + urlHost(address) + ":" + std::to_string(port) + ": " +
                 std::strerror(errno) + (taken ? "; name another port with --panel PORT, 0 takes a free one" : "");
        return false;
    }
    thread_ = std::thread([this] {
        http_.listen_after_bind();
        ended_ = true;
    });
    // Before it runs it cannot be stopped.
    while (!http_.is_running() && !ended_) {
        std::this_thread::yield();
    }
    return true;
}

httplib::Server::HandlerResponse PanelServer::Server::guard(const httplib::Request& request,
                                                            httplib::Response& response) const {
    const bool navigates = request.method == "GET" && request.get_header_value("Sec-Fetch-Mode") == "navigate";
    const std::string reason = refusal({request.get_header_value("Host"), request.get_header_value("Origin"),
                                        navigates ? std::string() : request.get_header_value("Sec-Fetch-Site")},
                                       hostName_);
    if (reason.empty()) {
        return httplib::Server::HandlerResponse::Unhandled;
    }
    reply(response, 403, reason);
    return httplib::Server::HandlerResponse::Handled;
}

void PanelServer::Server::takeLine(const httplib::Request& request, httplib::Response& response) const {
    std::string line = request.body;
    while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) {
        line.pop_back();
    }
    try {
        if (line.find('\n') != std::string::npos) {
            throw BadInput("several lines came at once; expected one");
        }
        reply(response, 200, handlers_.takeLine(line));
    } catch (const BadInput& error) {
        reply(response, 400, error.what());
    } catch (const std::exception&) {
        reply(response, 503, "the simulator ends");
    }
}

void PanelServer::Server::openPage(httplib::Response& response) {
    const std::shared_ptr<PageStream> page = newPage();
    if (!page) {
        reply(response, 503, std::to_string(kMostPages) + " pages are open, which is the most; close one of them");
        return;
    }
    response.set_chunked_content_provider(
        "text/event-stream",
        [page, texts = std::vector<PageStream::Text>()](std::size_t, httplib::DataSink& sink) mutable {
            if (!page->take(&texts)) {
                return false;
            }
            for (const PageStream::Text& text : texts) {
                if (!sink.write(text->data(), text->size())) {
                    return false;
                }
            }
            return true;
        },
        [page](bool) { page->end(); });
    handlers_.openPage(page);
}

/// Null when there are too many.
std::shared_ptr<PageStream> PanelServer::Server::newPage() {
    const sync::MutexLock lock(mutex_);
    const auto gone = [](const std::weak_ptr<PageStream>& known) {
        const std::shared_ptr<PageStream> page = known.lock();
        return !page || page->ended();
    };
    pages_.erase(std::remove_if(pages_.begin(), pages_.end(), gone), pages_.end());
    if (closing_ || pages_.size() >= kMostPages) {
        return nullptr;
    }
    auto page = std::make_shared<PageStream>();
    pages_.push_back(page);
    return page;
}

PanelServer::PanelServer(Handlers handlers) : server_(std::make_unique<Server>(std::move(handlers))) {}

PanelServer::~PanelServer() = default;

bool PanelServer::listen(const std::string& address, int port, std::string* error) {
    return server_->listen(address, port, error);
}

int PanelServer::port() const {
    return server_->port();
}

}  // namespace qvn::tools
