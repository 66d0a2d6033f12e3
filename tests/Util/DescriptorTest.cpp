// labels: threads
#include <Cordel/Util/detail/Descriptor.h>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <signal.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <string>
#include <thread>

using namespace Cordel::Util::detail;

namespace {

bool isOpen(int fd)
{
    return ::fcntl(fd, F_GETFD) != -1;
}

struct Pipe {
    Pipe()
    {
        int fds[2];
        EXPECT_EQ(::pipe2(fds, O_CLOEXEC), 0);
        readEnd = Descriptor(fds[0]);
        writeEnd = Descriptor(fds[1]);
    }
    Descriptor readEnd, writeEnd;
};

// Bytes that show where a piece went missing or came twice.
std::string pattern(std::size_t size)
{
    std::string text(size, '\0');
    for (std::size_t i = 0; i < size; ++i)
        text[i] = char(i * 7 + i / 251);
    return text;
}

volatile std::sig_atomic_t interruptions = 0;

// While it lives, a timer interrupts the calling thread every 100 microseconds. The handler is
// installed without SA_RESTART, so a blocked read or write comes back early: short, or with
// EINTR when it had moved nothing yet.
class Interrupted {
public:
    Interrupted()
    {
        struct sigaction action{};
        action.sa_handler = [](int) { interruptions = interruptions + 1; };
        ::sigaction(SIGALRM, &action, &previous);
        itimerval const every{{0, 100}, {0, 100}};
        ::setitimer(ITIMER_REAL, &every, nullptr);
    }
    ~Interrupted()
    {
        itimerval const off{};
        ::setitimer(ITIMER_REAL, &off, nullptr);
        ::sigaction(SIGALRM, &previous, nullptr);
    }

private:
    struct sigaction previous{};
};

// A thread that never takes the timer's signal, so that it interrupts the test's own calls.
template <typename Body>
std::thread peer(Body body)
{
    sigset_t alarm, old;
    sigemptyset(&alarm);
    sigaddset(&alarm, SIGALRM);
    ::pthread_sigmask(SIG_BLOCK, &alarm, &old);
    std::thread thread(body);
    ::pthread_sigmask(SIG_SETMASK, &old, nullptr);
    return thread;
}

} // namespace

TEST(Descriptor, OwnsItsDescriptorAndHandsItOver)
{
    Pipe pipe;
    int const first = pipe.readEnd.Get(), second = pipe.writeEnd.Get();
    Descriptor taken(std::move(pipe.readEnd));
    EXPECT_FALSE(pipe.readEnd.IsOpen());
    EXPECT_EQ(taken.Get(), first);

    pipe.writeEnd = std::move(taken);
    EXPECT_FALSE(isOpen(second)) << "the descriptor assigned over is closed";
    EXPECT_TRUE(isOpen(first));
    EXPECT_TRUE(pipe.writeEnd.Close());
    EXPECT_FALSE(isOpen(first));
    EXPECT_TRUE(pipe.writeEnd.Close()) << "nothing left to close";

    int const spare = ::dup(STDIN_FILENO);
    { Descriptor scoped(spare); }
    EXPECT_FALSE(isOpen(spare));
}

TEST(Descriptor, ReadAllKeepsToItsLimit)
{
    for (std::size_t const size : {std::size_t(10), std::size_t(11)}) {
        Pipe pipe;
        ASSERT_EQ(WriteAll(pipe.writeEnd.Get(), "0123456789X", size), size);
        pipe.writeEnd.Close();
        std::string out = "ab";
        EXPECT_EQ(ReadAll(pipe.readEnd.Get(), out, 12), size == 10) << size << " bytes after 2, at most 12";
    }
    std::string out;
    EXPECT_FALSE(ReadAll(-1, out, 100));
}

TEST(Descriptor, WriteAllSaysHowFarItGot)
{
    Pipe pipe;
    pipe.readEnd.Close();
    auto const previous = std::signal(SIGPIPE, SIG_IGN);
    EXPECT_EQ(WriteAll(pipe.writeEnd.Get(), "abc", 3), 0u);
    EXPECT_EQ(errno, EPIPE);
    std::signal(SIGPIPE, previous);
    EXPECT_EQ(WriteAll(pipe.writeEnd.Get(), "", 0), 0u);
}

TEST(Descriptor, InterruptionsAndShortTransfersLoseNothing)
{
    // Far more than a pipe holds, so that both sides block again and again.
    std::string const sent = pattern(std::size_t(8) << 20);
    // A side that gives up early must fail the test, not leave the other blocked or killed.
    auto const previous = std::signal(SIGPIPE, SIG_IGN);
    interruptions = 0;
    Interrupted interrupted;

    // Writing: the peer drains in small reads, so the writer keeps waiting for room.
    {
        Pipe pipe;
        std::string received;
        std::thread reader = peer([&] {
            char piece[4096];
            for (ssize_t n; (n = ::read(pipe.readEnd.Get(), piece, sizeof piece)) > 0;)
                received.append(piece, std::size_t(n));
        });
        EXPECT_EQ(WriteAll(pipe.writeEnd.Get(), sent.data(), sent.size()), sent.size());
        pipe.writeEnd.Close();
        reader.join();
        EXPECT_TRUE(received == sent);
    }
    // Reading: the peer feeds small writes, so the reader keeps waiting for data.
    {
        Pipe pipe;
        std::thread writer = peer([&] {
            for (std::size_t at = 0; at < sent.size(); at += 4096)
                if (::write(pipe.writeEnd.Get(), sent.data() + at, 4096) < 0 && errno == EPIPE)
                    break;
            pipe.writeEnd.Close();
        });
        std::string received;
        EXPECT_TRUE(ReadAll(pipe.readEnd.Get(), received, sent.size()));
        pipe.readEnd.Close();
        writer.join();
        EXPECT_TRUE(received == sent);
    }
    EXPECT_GT(interruptions, 0);
    std::signal(SIGPIPE, previous);
}
