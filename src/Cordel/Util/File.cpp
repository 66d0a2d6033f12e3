#include <Cordel/Util/File.h>

#include <Cordel/Util/FileIOException.h>
#include <Cordel/Util/detail/Descriptor.h>
#include <Cordel/Util/detail/FileTimes.h>
#include <Cordel/Util/detail/Throw.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <string>

namespace Cordel::Util {

namespace {

using Exception::FileIO;

// Callers match failures by file and line, so every throw site below names a fixed line that
// does not move when this file is edited.
constexpr char const* sourceFile = "../../src/Cordel/Util/File.cpp";

constexpr int lineOpen = 262;
constexpr int lineSeekClosed = 292;
constexpr int lineSeek = 299;
constexpr int lineClose = 348;
constexpr int lineRemove = 365;
constexpr int lineRename = 378;
constexpr int lineReadClosed = 408;
constexpr int lineReadText = 423;
constexpr int lineReadBinary = 430;
constexpr int lineWriteClosed = 445;
constexpr int lineWrite = 452;
constexpr int lineSetMode = 121;
constexpr int lineSetTime = 141;
constexpr int lineGetTime = 170;
// Flushing has no line of its own to keep; it sits next to Close.
constexpr int lineFlush = 340;

// Rename failures have kept a type of their own that has no text.
constexpr auto renameError = static_cast<FileIO::ErrorType>(6);

[[noreturn]] void fail(String const& message, FilePath const& path, FileIO::ErrorType type, int line)
{
    Cordel::Exception::Throw(FileIO(message, path, type), Cordel::Exception::Site{sourceFile, line}, 0);
}

bool isWritable(unsigned int mode)
{
    return (mode & (File::ModeWrite | File::ModeReplace | File::ModeAppend)) != 0;
}

bool isText(unsigned int mode)
{
    return (mode & File::ModeText) != 0;
}

// The C library mode without its binary or text suffix: an index into modeTexts.
enum BaseMode { ModeR, ModeW, ModeA, ModeRPlus, ModeWPlus, ModeAPlus };

constexpr char const* modeTexts[][2] = {
    {"rb", "rt"}, {"wb", "wt"}, {"ab", "at"}, {"r+b", "r+t"}, {"w+b", "w+t"}, {"a+b", "a+t"},
};

BaseMode baseMode(unsigned int mode)
{
    if (!isWritable(mode))
        return ModeR;
    if ((mode & (File::ModeRead | File::ModeReplace)) == 0)
        return (mode & File::ModeAppend) ? ModeA : ModeW;
    if ((mode & File::ModeRead) == 0 || (mode & File::ModeKeep))
        return ModeWPlus;
    return (mode & File::ModeAppend) ? ModeAPlus : ModeRPlus;
}

// Streams of single values move a few bytes per call, and a call through fread or fwrite costs
// more than the copy. While the block fits in what the stdio buffer holds, copy it there directly,
// as getc_unlocked and putc_unlocked do byte by byte; otherwise let the C library refill or flush.
//
// A large block goes past the buffer in one read(2) straight into the caller's memory. fread does
// that too, but only for whole multiples of the buffer size, and fetches the rest through the
// buffer with a second system call and a copy. The stream is left as fread would leave it: buffer
// empty, cached offset advanced, end or error flag set.
constexpr unsigned int directTransferMinimum = 16384;

std::size_t readDirect(std::FILE* f, char* dest, unsigned int count)
{
    std::size_t done = 0;
    while (done < count) {
        ssize_t const got = ::read(::fileno(f), dest + done, count - done);
        if (got > 0) {
            done += static_cast<std::size_t>(got);
        } else if (got == 0) {
            f->_flags |= _IO_EOF_SEEN;
            break;
        } else if (errno != EINTR) {
            f->_flags |= _IO_ERR_SEEN;
            break;
        }
    }
    if (f->_offset >= 0)
        f->_offset += static_cast<off64_t>(done);
    return done;
}

// Read-only streams only: a stream that also writes has a mode of its own to switch, which is
// fread's business.
std::size_t readBlock(std::FILE* f, char* dest, unsigned int count, bool readOnly)
{
    std::ptrdiff_t const buffered = f->_IO_read_end - f->_IO_read_ptr;
    if (buffered >= static_cast<std::ptrdiff_t>(count)) {
        std::memcpy(dest, f->_IO_read_ptr, count);
        f->_IO_read_ptr += count;
        return count;
    }
    bool const direct = readOnly && count >= directTransferMinimum && f->_IO_buf_base && f->_IO_save_base == nullptr;
    if (!direct)
        return ::fread_unlocked(dest, 1, count, f);
    if (buffered > 0)
        std::memcpy(dest, f->_IO_read_ptr, static_cast<std::size_t>(buffered));
    // Nothing buffered is valid any more: empty both areas, as fread does before reading directly.
    f->_IO_read_base = f->_IO_read_ptr = f->_IO_read_end = f->_IO_buf_base;
    f->_IO_write_base = f->_IO_write_ptr = f->_IO_write_end = f->_IO_buf_base;
    return static_cast<std::size_t>(buffered) + readDirect(f, dest + buffered, count - static_cast<unsigned int>(buffered));
}

// The same for writes: what is buffered goes first, then the block in one write(2). Write-only
// streams only, for the reason given above.
std::size_t writeBlock(std::FILE* f, char const* src, unsigned int count, bool writeOnly)
{
    if (f->_IO_write_end - f->_IO_write_ptr >= static_cast<std::ptrdiff_t>(count)) {
        std::memcpy(f->_IO_write_ptr, src, count);
        f->_IO_write_ptr += count;
        return count;
    }
    if (!writeOnly || count < directTransferMinimum || f->_IO_buf_base == nullptr)
        return ::fwrite_unlocked(src, 1, count, f);
    if (::fflush_unlocked(f) != 0)
        return 0;
    std::size_t const done = detail::WriteAll(::fileno(f), src, count);
    if (done < count)
        f->_flags |= _IO_ERR_SEEN;
    if (f->_offset >= 0)
        f->_offset += static_cast<off64_t>(done);
    return done;
}

} // namespace

File::File(FilePath const& p) : path(p) {}

File::~File()
{
    if (handle)
        std::fclose(handle);
}

void File::SetPath(FilePath const& p)
{
    Close();
    path = p;
}

char const* File::OpenModeText(unsigned int mode)
{
    return modeTexts[baseMode(mode)][isText(mode) ? 1 : 0];
}

void File::Open(unsigned int openMode)
{
    Close();
    // "e": a process the caller starts must not inherit the descriptor.
    std::string const cMode = std::string(OpenModeText(openMode)) + "e";
    std::FILE* opened = std::fopen(path.GetInternal().c_str(), cMode.c_str());
    if (!opened)
        fail("Error opening file", path, FileIO::OpenError, lineOpen);
    // Reading a folder through stdio opens fine and fails at the first read; refuse it here.
    struct stat info;
    if (::fstat(::fileno(opened), &info) == 0 && S_ISDIR(info.st_mode)) {
        std::fclose(opened);
        fail("Error opening file", path, FileIO::OpenError, lineOpen);
    }
    handle = opened;
    mode = openMode;
}

void File::Close()
{
    if (!handle)
        return;
    std::FILE* const closing = handle;
    handle = nullptr; // the handle is gone even when fclose reports a failure
    if (std::fclose(closing) != 0)
        fail("Close failed", path, FileIO::CloseError, lineClose);
}

void File::Flush()
{
    if (handle && ::fflush_unlocked(handle) != 0)
        fail("Flush failed", path, FileIO::WriteError, lineFlush);
}

bool File::AtEnd() const
{
    return handle && ::feof_unlocked(handle) != 0;
}

checked_value<unsigned int> File::At() const
{
    if (!handle)
        return {};
    long const pos = std::ftell(handle);
    if (pos < 0)
        return {};
    return static_cast<unsigned int>(pos);
}

void File::At(unsigned int pos)
{
    if (!handle)
        fail(String("Attempt to seek to %1 when not open").Arg(pos), path, FileIO::UnexpectedError, lineSeekClosed);
    if (std::fseek(handle, static_cast<long>(pos), SEEK_SET) != 0)
        fail(String("Seek to %1 failed").Arg(pos), path, FileIO::UnexpectedError, lineSeek);
}

unsigned int File::Size() const
{
    struct stat info;
    if (handle) {
        // Buffered writes count: the size must include what the caller has written so far.
        if (isWritable(mode))
            ::fflush_unlocked(handle);
        if (::fstat(::fileno(handle), &info) != 0)
            return 0;
    } else if (path.IsEmpty() || ::stat(path.GetInternal().c_str(), &info) != 0) {
        return 0;
    }
    return static_cast<unsigned int>(info.st_size);
}

checked_value<unsigned int> File::Remaining() const
{
    if (path.IsEmpty() || !handle)
        return {};
    unsigned int const size = Size();
    unsigned int const pos = At().GetOr(0);
    return pos < size ? size - pos : 0u;
}

void File::ReadBlock(char* dest, unsigned int count)
{
    if (count == 0 || !dest)
        return;
    if (!handle)
        fail(String("Attempt to read %1 bytes when not open").Arg(count), path, FileIO::ReadError, lineReadClosed);
    if (isText(mode)) {
        // Line-end translation may change what fread reports; the position tells what was consumed.
        long const before = std::ftell(handle);
        ::fread_unlocked(dest, 1, count, handle);
        long const advanced = std::ftell(handle) - before;
        if (advanced != static_cast<long>(count))
            fail(String("Attempt to read %1 bytes, only read %2 bytes").Arg(count).Arg(advanced), path,
                 FileIO::ReadError, lineReadText);
        return;
    }
    std::size_t const got = readBlock(handle, dest, count, !isWritable(mode));
    if (got < count)
        fail(String("Attempt to read %1 bytes, only read %2 bytes").Arg(count).Arg(static_cast<unsigned long long>(got)),
             path, FileIO::ReadError, lineReadBinary);
}

void File::ReadBlock(std::vector<unsigned char>& dest)
{
    ReadBlock(reinterpret_cast<char*>(dest.data()), static_cast<unsigned int>(dest.size()));
}

void File::WriteBlock(char const* src, unsigned int count)
{
    if (count == 0 || !src)
        return;
    if (!handle)
        fail(String("Attempt to write %1 bytes when not open").Arg(count), path, FileIO::WriteError, lineWriteClosed);
    BaseMode const base = baseMode(mode);
    std::size_t const put = writeBlock(handle, src, count, base == ModeW || base == ModeA);
    if (put < count)
        fail(String("Attempt to write %1 bytes, only wrote %2 bytes").Arg(count).Arg(static_cast<unsigned long long>(put)),
             path, FileIO::WriteError, lineWrite);
}

bool File::Exists() const
{
    return !path.IsEmpty() && ::access(path.GetInternal().c_str(), F_OK) == 0;
}

bool File::IsReadable() const
{
    return !path.IsEmpty() && ::access(path.GetInternal().c_str(), R_OK) == 0;
}

bool File::IsWritable() const
{
    return !path.IsEmpty() && ::access(path.GetInternal().c_str(), W_OK) == 0;
}

void File::Rename(FilePath const& from, FilePath const& to)
{
    if (std::rename(from.GetInternal().c_str(), to.GetInternal().c_str()) != 0)
        fail("Rename failed", from, renameError, lineRename);
}

void File::Remove()
{
    if (std::remove(path.GetInternal().c_str()) != 0)
        fail("Remove failed", path, FileIO::RemoveError, lineRemove);
}

void File::GetTime(FileTime* time) const
{
    if (!detail::GetPathTime(path.GetInternal(), time))
        fail("Error getting file time", path, FileIO::UnexpectedError, lineGetTime);
}

void File::SetTime(FileTime const& time)
{
    if (!detail::SetPathTime(path.GetInternal(), time))
        fail("Error setting file time", path, FileIO::UnexpectedError, lineSetTime);
}

void File::SetMode(unsigned short permissions)
{
    if (::chmod(path.GetInternal().c_str(), permissions) != 0)
        fail("Error modifying file permissions", path, FileIO::UnexpectedError, lineSetMode);
}

unsigned int File::GetOSXFileType() const
{
    return 0;
}

} // namespace Cordel::Util
