#pragma once
// Servers for the HTTP client's tests, all on 127.0.0.1 with ephemeral ports: an HTTP(S) server
// with fixed, generated, dripping, cut and redirecting answers; a server that accepts and never
// answers; a port whose accept queue is full, so that connecting hangs; and a one-answer proxy.

#include <httplib.h>

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <mutex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace HttpTest {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

// The byte at offset i of every generated body: not periodic in any power of two, so a resume
// at a wrong offset cannot pass unnoticed.
inline char patternByte(std::size_t i)
{
    return static_cast<char>('a' + (i * 7 + i / 251) % 26);
}

inline std::string pattern(std::size_t from, std::size_t length)
{
    std::string s(length, '\0');
    for (std::size_t i = 0; i < length; ++i)
        s[i] = patternByte(from + i);
    return s;
}

// Counts events and lets a test wait for a count, with a bound that fails instead of hanging.
class Signal {
public:
    void Raise()
    {
        std::lock_guard<std::mutex> hold(mutex);
        ++count;
        changed.notify_all();
    }
    bool WaitFor(int n, std::chrono::milliseconds limit = 30s)
    {
        std::unique_lock<std::mutex> hold(mutex);
        return changed.wait_for(hold, limit, [&] { return count >= n; });
    }
    int Count()
    {
        std::lock_guard<std::mutex> hold(mutex);
        return count;
    }

private:
    std::mutex mutex;
    std::condition_variable changed;
    int count = 0;
};

// Polls a condition that no thread of ours announces (the kernel's view of a socket), within a
// generous bound.
template <typename Condition>
bool PollUntil(Condition condition, std::chrono::milliseconds limit = 30s)
{
    auto const end = Clock::now() + limit;
    while (!condition())
        if (Clock::now() > end)
            return false;
        else
            std::this_thread::yield();
    return true;
}

// The answers:
//   /hello               "hello world"
//   /bytes/N             N pattern bytes with a length (Range requests honoured)
//   /whole/N             N pattern bytes, Range requests ignored
//   /cut/N               announces N pattern bytes, sends half and closes
//   /drip                one byte every 20 ms for up to ten seconds
//   /status/N            status N with the body "status N"
//   /redirect/N          a chain of N redirects ending at /hello
//   /loop                redirects to itself
//   /to?url=U            redirects to U
//   /echo                the method, the headers and the body as text
class Server {
public:
    // With a certificate and key (PEM files) it serves HTTPS.
    explicit Server(std::string const& certificate = {}, std::string const& key = {})
    {
        server = certificate.empty() ? std::make_unique<httplib::Server>()
                                     : std::make_unique<httplib::SSLServer>(certificate.c_str(), key.c_str());
        // A connection per request, so that stopping never waits for an idle keep-alive.
        server->set_keep_alive_max_count(1);
        routes();
        port = server->bind_to_any_port("127.0.0.1");
        EXPECT_GT(port, 0);
        thread = std::thread([this] { server->listen_after_bind(); });
        EXPECT_TRUE(PollUntil([this] { return server->is_running(); }));
    }
    ~Server()
    {
        stopping = true;
        server->stop();
        thread.join();
    }

    std::string URL(std::string const& path) const
    {
        return std::string(secure() ? "https" : "http") + "://127.0.0.1:" + std::to_string(port) + path;
    }
    bool secure() const { return dynamic_cast<httplib::SSLServer*>(server.get()) != nullptr; }

    int port = 0;
    std::atomic<int> requests{0};
    std::mutex lastRangeMutex;
    std::string lastRange; // the Range header of the last request, under lastRangeMutex

private:
    static std::size_t sizeOf(httplib::Request const& r) { return std::stoull(r.matches[1]); }

    void provide(httplib::Response& res, std::size_t size, std::size_t sendOnly)
    {
        res.set_content_provider(size, "application/octet-stream",
                                 [sendOnly](std::size_t offset, std::size_t length, httplib::DataSink& sink) {
                                     if (offset >= sendOnly)
                                         return false;
                                     length = std::min({length, std::size_t(1) << 16, sendOnly - offset});
                                     std::string const block = pattern(offset, length);
                                     return sink.write(block.data(), block.size());
                                 });
    }

    void routes()
    {
        server->set_pre_routing_handler([this](httplib::Request const& req, httplib::Response&) {
            ++requests;
            std::lock_guard<std::mutex> hold(lastRangeMutex);
            lastRange = req.get_header_value("Range");
            // The server answers a Range with a part by itself; /whole plays one that does not.
            if (req.path.starts_with("/whole/"))
                const_cast<httplib::Request&>(req).ranges.clear();
            return httplib::Server::HandlerResponse::Unhandled;
        });
        server->Get("/hello", [](auto const&, httplib::Response& res) { res.set_content("hello world", "text/plain"); });
        server->Get(R"(/bytes/(\d+))", [this](httplib::Request const& req, httplib::Response& res) {
            provide(res, sizeOf(req), sizeOf(req));
        });
        server->Get(R"(/whole/(\d+))", [](httplib::Request const& req, httplib::Response& res) {
            res.set_content(pattern(0, sizeOf(req)), "application/octet-stream");
        });
        server->Get(R"(/cut/(\d+))", [this](httplib::Request const& req, httplib::Response& res) {
            provide(res, sizeOf(req), sizeOf(req) / 2);
        });
        server->Get("/drip", [this](auto const&, httplib::Response& res) {
            res.set_chunked_content_provider("text/plain", [this](std::size_t offset, httplib::DataSink& sink) {
                if (stopping || offset >= 500) {
                    sink.done();
                    return true;
                }
                std::this_thread::sleep_for(20ms); // the drip's pace, not a wait for anyone
                return sink.write("x", 1);
            });
        });
        server->Get(R"(/status/(\d+))", [](httplib::Request const& req, httplib::Response& res) {
            res.status = std::stoi(req.matches[1]);
            res.set_content("status " + std::string(req.matches[1]), "text/plain");
        });
        server->Get(R"(/redirect/(\d+))", [](httplib::Request const& req, httplib::Response& res) {
            int const left = std::stoi(req.matches[1]);
            res.set_redirect(left > 1 ? "/redirect/" + std::to_string(left - 1) : "/hello");
        });
        server->Get("/loop", [](auto const&, httplib::Response& res) { res.set_redirect("/loop"); });
        server->Get("/to", [](httplib::Request const& req, httplib::Response& res) {
            res.set_redirect(req.get_param_value("url"));
        });
        auto const echo = [](httplib::Request const& req, httplib::Response& res) {
            std::string text = req.method + "\n";
            for (auto const& [name, value] : req.headers)
                text += name + ": " + value + "\n";
            res.set_content(text + "\n" + req.body, "text/plain");
        };
        server->Get("/echo", echo);
        server->Post("/echo", echo);
        server->Put("/echo", echo);
        server->Get("/head", [](auto const&, httplib::Response& res) {
            res.set_header("X-Answer", "42");
            res.set_content("not for HEAD", "text/plain");
        });
    }

    std::unique_ptr<httplib::Server> server;
    std::thread thread;
    std::atomic<bool> stopping{false};
};

inline int listeningSocket(int backlog, int& port)
{
    int const fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    EXPECT_EQ(::bind(fd, reinterpret_cast<sockaddr*>(&address), size), 0);
    EXPECT_EQ(::listen(fd, backlog), 0);
    ::getsockname(fd, reinterpret_cast<sockaddr*>(&address), &size);
    port = ntohs(address.sin_port);
    return fd;
}

// Accepts connections and never answers them.
class SilentServer {
public:
    SilentServer()
    {
        fd = listeningSocket(16, port);
        thread = std::thread([this] {
            for (int c; (c = ::accept(fd, nullptr, nullptr)) >= 0;) {
                held.push_back(c);
                accepted.Raise();
            }
        });
    }
    ~SilentServer()
    {
        ::shutdown(fd, SHUT_RDWR); // wakes the accept
        thread.join();
        ::close(fd);
        for (int c : held)
            ::close(c);
    }
    std::string URL() const { return "http://127.0.0.1:" + std::to_string(port) + "/"; }

    int port = 0;
    Signal accepted;

private:
    int fd = -1;
    std::vector<int> held;
    std::thread thread;
};

// A listening port whose accept queue is full: the kernel drops further connection requests, so
// a client stays in the middle of connecting.
class FullBacklog {
public:
    FullBacklog()
    {
        fd = listeningSocket(0, port);
        filler = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        address.sin_port = htons(static_cast<unsigned short>(port));
        EXPECT_EQ(::connect(filler, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    }
    ~FullBacklog()
    {
        ::close(filler);
        ::close(fd);
    }
    std::string URL() const { return "http://127.0.0.1:" + std::to_string(port) + "/"; }

    // Whether a connection to the port is waiting for the server's SYN-ACK.
    bool SomeoneConnecting() const
    {
        std::ifstream tcp("/proc/net/tcp");
        std::string line;
        char wanted[16];
        std::snprintf(wanted, sizeof wanted, "0100007F:%04X", port);
        while (std::getline(tcp, line)) {
            std::istringstream fields(line);
            std::string slot, local, remote, state;
            fields >> slot >> local >> remote >> state;
            if (remote == wanted && state == "02")
                return true;
        }
        return false;
    }

    int port = 0;

private:
    int fd = -1;
    int filler = -1;
};

// An HTTP proxy that answers one request itself, "via proxy", and records its request line.
class OneAnswerProxy {
public:
    OneAnswerProxy()
    {
        fd = listeningSocket(4, port);
        thread = std::thread([this] {
            int const c = ::accept(fd, nullptr, nullptr);
            if (c < 0)
                return;
            std::string head;
            char buffer[4096];
            for (ssize_t n; head.find("\r\n\r\n") == std::string::npos && (n = ::read(c, buffer, sizeof buffer)) > 0;)
                head.append(buffer, static_cast<std::size_t>(n));
            {
                std::lock_guard<std::mutex> hold(mutex);
                requestLine = head.substr(0, head.find("\r\n"));
            }
            std::string const answer = "HTTP/1.1 200 OK\r\nContent-Length: 9\r\nConnection: close\r\n\r\nvia proxy";
            (void)!::write(c, answer.data(), answer.size());
            ::close(c);
        });
    }
    ~OneAnswerProxy()
    {
        ::shutdown(fd, SHUT_RDWR);
        thread.join();
        ::close(fd);
    }
    std::string Address() const { return "http://127.0.0.1:" + std::to_string(port); }
    std::string RequestLine()
    {
        std::lock_guard<std::mutex> hold(mutex);
        return requestLine;
    }

    int port = 0;

private:
    int fd = -1;
    std::thread thread;
    std::mutex mutex;
    std::string requestLine;
};

// Direct tests must not go through a proxy that the machine's environment names.
inline void ClearProxyEnvironment()
{
    for (char const* name : {"http_proxy", "https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY", "no_proxy", "NO_PROXY"})
        ::unsetenv(name);
}

// A CA and a server certificate for 127.0.0.1 signed by it, and a second CA that signed nothing,
// made with openssl in folder.
struct Certificates {
    std::string caFile, otherCaFile, serverCertificate, serverKey;

    static bool Make(std::string const& folder, Certificates& out)
    {
        std::string const f = folder + "/";
        std::string const ec = " -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes";
        std::string const ca = " -addext basicConstraints=critical,CA:TRUE -addext keyUsage=critical,keyCertSign,cRLSign";
        std::string const script =
            "cd " + folder + " && exec >openssl.log 2>&1 && " +
            "openssl req -x509" + ec + " -keyout ca.key -out ca.pem -days 2 -subj '/CN=Cordel Test CA'" + ca + " && " +
            "openssl req -x509" + ec + " -keyout other.key -out other.pem -days 2 -subj '/CN=Other CA'" + ca + " && " +
            "openssl req" + ec + " -keyout server.key -out server.csr -subj '/CN=127.0.0.1' && " +
            "printf 'subjectAltName=IP:127.0.0.1,DNS:localhost\\nbasicConstraints=CA:FALSE\\n' >server.ext && " +
            "openssl x509 -req -in server.csr -CA ca.pem -CAkey ca.key -CAcreateserial -out server.pem -days 2 -extfile server.ext";
        if (std::system(script.c_str()) != 0)
            return false;
        out = {f + "ca.pem", f + "other.pem", f + "server.pem", f + "server.key"};
        return true;
    }
};

} // namespace HttpTest
