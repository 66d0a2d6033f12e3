#pragma once
// File: one file on disk, opened through the C library's buffered streams.
//
// A File belongs to one thread at a time; it reads and writes with the C library's unlocked calls,
// so that the stdio buffer is the only cost between the caller and the disk. Positions and sizes
// are 32-bit, as every file format the library reads and writes uses them.
//
// Every failure throws Util::Exception::FileIO with the path, an error type, this module's source
// file and a fixed line, and error code 0, so that callers can rely on what they see.

#include <Cordel/common/Export.h>
#include <Cordel/common/Path.h>
#include <Cordel/common/Types.h>

#include <cstdint>
#include <cstdio>
#include <type_traits>
#include <vector>

namespace Cordel::Util {

// A moment as whole seconds and nanoseconds since 1970-01-01 00:00 UTC.
struct FileTimeStamp {
    std::int64_t seconds = 0;
    std::int32_t nanoseconds = 0; // 0 to 999999999

    friend bool operator==(FileTimeStamp const&, FileTimeStamp const&) = default;
};

// The times of a file or folder. GetTime sets both; for SetTime an unset field means "leave that
// time as it is", so that touching the modification time never disturbs the access time.
struct FileTime {
    checked_value<FileTimeStamp> accessTime;
    checked_value<FileTimeStamp> modificationTime;
};

class CORDEL_API File : noncopyable {
public:
    // Bits of the mode given to Open. 0x01 has no role.
    enum OpenMode : unsigned int {
        ModeRead = 0x02,
        ModeWrite = 0x04,     // alone: create or truncate, write only
        ModeReplace = 0x08,   // read and write a fresh, empty file
        ModeAppend = 0x10,    // every write goes to the end
        ModeKeep = 0x20,      // with read and write: keep the existing contents
        ModeText = 0x40,      // without it the file is binary
    };

    File() = default;
    explicit File(FilePath const& path);
    ~File(); // closes, ignoring a failure to do so

    // Closes an open handle first.
    void SetPath(FilePath const& path);
    FilePath const& GetPath() const { return path; }

    // Opens the path; an open handle is closed first. The C library mode follows from the bits:
    // read only "r"; write without read "w", or "a" with ModeAppend; read and write "r+", or "w+"
    // with ModeKeep or without ModeRead (ModeReplace), or "a+" with ModeAppend. A folder is never
    // opened as a file.
    void Open(unsigned int mode);
    // The C library mode that Open uses for the bits, as "r+b" or "at".
    static char const* OpenModeText(unsigned int mode);

    void Close();
    bool IsOpen() const { return handle != nullptr; }
    // Hands buffered writes to the system; a write error that was only buffered shows here.
    void Flush();
    // True once a read has hit the end; false when closed.
    bool AtEnd() const;

    // Unset when closed.
    checked_value<unsigned int> At() const;
    // Moves to an absolute position.
    void At(unsigned int pos);
    // The size of the open file, else of the file at the path; 0 when there is none.
    unsigned int Size() const;
    // Bytes from the position to the end, 0 past the end; unset when closed or without a path.
    checked_value<unsigned int> Remaining() const;

    // Reads exactly count bytes or throws; what was read before a short read is consumed.
    // A count of 0 or a null buffer does nothing, open or not.
    void ReadBlock(char* dest, unsigned int count);
    void ReadBlock(std::vector<unsigned char>& dest);
    void WriteBlock(char const* src, unsigned int count);

    // A value in host byte order.
    template <typename T>
        requires std::is_same_v<T, unsigned short> || std::is_same_v<T, unsigned int>
    void ReadPrimitive(T& value)
    {
        ReadBlock(reinterpret_cast<char*>(&value), sizeof(T));
    }
    template <typename T>
        requires std::is_same_v<T, unsigned short> || std::is_same_v<T, unsigned int>
    void WritePrimitive(T const& value)
    {
        WriteBlock(reinterpret_cast<char const*>(&value), sizeof(T));
    }

    bool Exists() const;
    bool IsReadable() const;
    bool IsWritable() const;

    static void Rename(FilePath const& from, FilePath const& to);
    void Remove();

    // Fills both times; a null pointer only checks that the file is there.
    void GetTime(FileTime* time) const;
    void SetTime(FileTime const& time);
    // Permission bits as for chmod (0644 and the like).
    void SetMode(unsigned short permissions);

    // Finder file types do not exist here: always 0.
    unsigned int GetOSXFileType() const;

private:
    FilePath path;
    unsigned int mode = 0;
    std::FILE* handle = nullptr;
};

} // namespace Cordel::Util
