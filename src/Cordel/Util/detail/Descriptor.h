#pragma once
// Internal: an owned file descriptor, and reading and writing that neither an interrupting signal
// nor a short transfer cuts short.
//
// Needs nothing but the C library: the clipboard helper program compiles it in as well.

#include <cstddef>
#include <string>

namespace Cordel::Util::detail {

// Closes its descriptor when it goes; moving hands the descriptor over.
class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int fd) : fd(fd) {}
    Descriptor(Descriptor&& other) noexcept;
    Descriptor& operator=(Descriptor&& other) noexcept;
    ~Descriptor();

    int Get() const { return fd; }
    bool IsOpen() const { return fd >= 0; }
    // Closes now and tells whether the close succeeded (an error of an earlier write may only
    // show here). Nothing open counts as success.
    bool Close();

private:
    int fd = -1;
};

// Appends what fd holds up to its end to out. False on a read error, or when out would grow to
// more than limit bytes.
bool ReadAll(int fd, std::string& out, std::size_t limit);

// Writes size bytes from data. Returns how many were written: size, unless an error stopped it
// (errno says which).
std::size_t WriteAll(int fd, void const* data, std::size_t size);

} // namespace Cordel::Util::detail
