// A load generator for one HTTP server on the loopback interface, a connection per request, in one
// thread. Prints its figures as name=value.
//
// Usage: bench-load PORT PATH [clients=N] [seconds=S] [requests=N] [silent=N] [pids=P,P...]
//
// silent: connections that are held open without a request meanwhile.
// pids: the server's processes, whose CPU time and memory are to be measured.

#include "platform/Files.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <netinet/in.h>
#include <ranges>
#include <span>
#include <string>
#include <sys/epoll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <thread>
#include <vector>

namespace
{

using Clock = std::chrono::steady_clock;
using ostrelle::Descriptor;

struct Options {
    int port = 0;
    std::string path;
    int clients = 64;
    double seconds = 3;
    std::size_t requests = ~std::size_t{0};
    int silent = 0;
    std::vector<std::string> pids;
};

[[noreturn]] void fail(const char *what)
{
    std::perror(what);
    std::exit(1);
}

Descriptor connectTo(int port)
{
    Descriptor socket(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    const auto *const general = reinterpret_cast<const sockaddr *>(&address);
    if (!socket ||
        (::connect(socket.get(), general, sizeof address) != 0 && errno != EINPROGRESS)) {
        fail("connect");
    }
    return socket;
}

// Nanoseconds that all threads of the server have run.
double cpuTime(const std::vector<std::string> &pids)
{
    double total = 0;
    for (const std::string &pid : pids) {
        for (const auto &task : std::filesystem::directory_iterator("/proc/" + pid + "/task")) {
            double running = 0;
            std::ifstream(task.path() / "schedstat") >> running;
            total += running;
        }
    }
    return total;
}

// Memory of the server that nobody else uses, in KiB.
double privateMemory(const std::vector<std::string> &pids)
{
    double total = 0;
    for (const std::string &pid : pids) {
        std::ifstream rollup("/proc/" + pid + "/smaps_rollup");
        for (std::string line; std::getline(rollup, line);) {
            if (line.starts_with("Private_")) {
                total += std::strtod(line.c_str() + line.find(':') + 1, nullptr);
            }
        }
    }
    return total;
}

class Load
{
public:
    explicit Load(const Options &options)
        : m_options(options)
        , m_request("GET " + options.path + " HTTP/1.1\r\nHost: localhost\r\n\r\n")
        , m_epoll(::epoll_create1(EPOLL_CLOEXEC))
        , m_clients(static_cast<std::size_t>(options.clients))
        , m_buffer(std::size_t{1024} * 1024)
    {
    }

    void run()
    {
        const auto end = Clock::now() + std::chrono::duration<double>(m_options.seconds);
        for (std::size_t i = 0; i < m_clients.size(); ++i) {
            begin(i);
        }
        std::vector<epoll_event> events(m_clients.size());
        while (m_open > 0) {
            const int count =
                ::epoll_wait(m_epoll.get(), events.data(), static_cast<int>(events.size()), -1);
            m_ended = Clock::now() >= end;
            for (int i = 0; i < count; ++i) {
                proceed(events[static_cast<std::size_t>(i)].data.u64);
            }
        }
    }

    // Microseconds from the start of connecting to the last byte, sorted.
    std::vector<double> latencies()
    {
        std::ranges::sort(m_latencies);
        return m_latencies;
    }
    std::size_t failures() const { return m_failures; }

private:
    struct Client {
        Descriptor socket;
        Clock::time_point began;
        std::size_t received = 0;
        bool sent = false;
    };

    void begin(std::size_t index)
    {
        if (m_ended || m_begun == m_options.requests) {
            return;
        }
        ++m_begun;
        ++m_open;
        Client &client = m_clients[index];
        client.began = Clock::now();
        client.received = 0;
        client.socket = connectTo(m_options.port);
        trySend(client);
        epoll_event event{.events = client.sent ? EPOLLIN : EPOLLOUT, .data = {.u64 = index}};
        ::epoll_ctl(m_epoll.get(), EPOLL_CTL_ADD, client.socket.get(), &event);
    }

    void trySend(Client &client)
    {
        client.sent = ::send(client.socket.get(), m_request.data(), m_request.size(),
                             MSG_NOSIGNAL) == static_cast<ssize_t>(m_request.size());
    }

    void proceed(std::size_t index)
    {
        Client &client = m_clients[index];
        if (!client.sent) {
            trySend(client);
            epoll_event event{.events = EPOLLIN, .data = {.u64 = index}};
            ::epoll_ctl(m_epoll.get(), EPOLL_CTL_MOD, client.socket.get(), &event);
            return;
        }
        const ssize_t count =
            ::recv(client.socket.get(), m_buffer.data(), m_buffer.size(), MSG_DONTWAIT);
        if (count > 0) {
            client.received += static_cast<std::size_t>(count);
        } else if (count == 0 || errno != EAGAIN) {
            finish(index);
        }
    }

    void finish(std::size_t index)
    {
        Client &client = m_clients[index];
        const std::chrono::duration<double, std::micro> took = Clock::now() - client.began;
        m_expected = m_expected == 0 ? client.received : m_expected;
        if (client.received == m_expected && m_expected > 0) {
            m_latencies.push_back(took.count());
        } else {
            ++m_failures;
        }
        client.socket = Descriptor();
        --m_open;
        begin(index);
    }

    const Options &m_options;
    const std::string m_request;
    const Descriptor m_epoll;
    std::vector<Client> m_clients;
    std::vector<char> m_buffer;
    std::vector<double> m_latencies;
    std::size_t m_begun = 0;
    std::size_t m_open = 0;
    std::size_t m_expected = 0; // bytes of a whole answer
    std::size_t m_failures = 0;
    bool m_ended = false;
};

Options parse(int argc, char **argv)
{
    if (argc < 3) {
        std::fputs("usage: bench-load PORT PATH [name=value...]\n", stderr);
        std::exit(2);
    }
    std::map<std::string, std::string> given;
    for (const std::string argument : std::span(argv, static_cast<std::size_t>(argc)).subspan(3)) {
        given[argument.substr(0, argument.find('='))] = argument.substr(argument.find('=') + 1);
    }
    Options options;
    options.port = std::atoi(argv[1]);
    options.path = argv[2];
    const auto number = [&](const char *name, auto &value) {
        if (given.contains(name)) {
            value = static_cast<std::remove_reference_t<decltype(value)>>(std::stod(given[name]));
        }
    };
    number("clients", options.clients);
    number("seconds", options.seconds);
    number("requests", options.requests);
    number("silent", options.silent);
    for (const auto pid : given["pids"] | std::views::split(',')) {
        options.pids.emplace_back(pid.begin(), pid.end());
    }
    return options;
}

std::vector<Descriptor> holdSilent(const Options &options)
{
    std::vector<Descriptor> silent;
    silent.reserve(static_cast<std::size_t>(options.silent));
    for (int i = 0; i < options.silent; ++i) {
        silent.push_back(connectTo(options.port));
    }
    if (options.silent > 0) {
        std::this_thread::sleep_for(std::chrono::milliseconds(500)); // until all are accepted
    }
    return silent;
}

double ownCpuTime()
{
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval &time) {
        return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

} // namespace

int main(int argc, char **argv)
{
    const Options options = parse(argc, argv);
    rlimit limit{};
    ::getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = limit.rlim_max;
    ::setrlimit(RLIMIT_NOFILE, &limit);

    const double memoryBefore = privateMemory(options.pids);
    const std::vector<Descriptor> silent = holdSilent(options);
    const double memoryAfter = privateMemory(options.pids);

    const double cpuBefore = cpuTime(options.pids);
    const double ownCpuBefore = ownCpuTime();
    const auto began = Clock::now();
    Load load(options);
    load.run();
    const std::chrono::duration<double> took = Clock::now() - began;
    const double cpu = cpuTime(options.pids) - cpuBefore;

    const std::vector<double> latencies = load.latencies();
    if (latencies.empty()) {
        std::fputs("no answer\n", stderr);
        return 1;
    }
    const auto count = static_cast<double>(latencies.size());
    std::printf("requests=%zu failures=%zu rate=%.1f p50_us=%.1f p99_us=%.1f max_us=%.1f "
                "cpu_us=%.3f own_cpu_share=%.3f silent_bytes=%.0f\n",
                latencies.size(), load.failures(), count / took.count(),
                latencies[latencies.size() / 2], latencies[latencies.size() * 99 / 100],
                latencies.back(), cpu / 1000 / count, (ownCpuTime() - ownCpuBefore) / took.count(),
                options.silent > 0 ? (memoryAfter - memoryBefore) * 1024 / options.silent : 0);
    return load.failures() == 0 ? 0 : 1;
}
