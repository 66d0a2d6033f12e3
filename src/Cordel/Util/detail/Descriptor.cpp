#include <Cordel/Util/detail/Descriptor.h>

#include <unistd.h>

#include <cerrno>
#include <utility>

namespace Cordel::Util::detail {

Descriptor::Descriptor(Descriptor&& other) noexcept : fd(std::exchange(other.fd, -1)) {}

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept
{
    if (this != &other) {
        Close();
        fd = std::exchange(other.fd, -1);
    }
    return *this;
}

Descriptor::~Descriptor()
{
    Close();
}

bool Descriptor::Close()
{
    // Linux releases the descriptor even when close fails, so it is never closed twice.
    int const closing = std::exchange(fd, -1);
    return closing < 0 || ::close(closing) == 0;
}

bool ReadAll(int fd, std::string& out, std::size_t limit)
{
    char buffer[65536];
    for (;;) {
        ssize_t const n = ::read(fd, buffer, sizeof buffer);
        if (n == 0)
            return true;
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0 || out.size() + std::size_t(n) > limit)
            return false;
        out.append(buffer, std::size_t(n));
    }
}

std::size_t WriteAll(int fd, void const* data, std::size_t size)
{
    char const* const bytes = static_cast<char const*>(data);
    std::size_t done = 0;
    while (done < size) {
        ssize_t const n = ::write(fd, bytes + done, size - done);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            break;
        done += std::size_t(n);
    }
    return done;
}

} // namespace Cordel::Util::detail
