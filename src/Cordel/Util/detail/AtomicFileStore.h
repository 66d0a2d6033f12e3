#pragma once
// Internal: a file that is only ever replaced whole. A reader sees the old contents or the new,
// never a mixture: the new contents go to a temporary file beside it, reach the disk and are
// renamed over it. Writers take turns through a lock file beside it ("<path>.lock"), so that one
// that reads, changes and replaces the file loses nothing another wrote meanwhile. The lock is a
// flock, which the system drops with a writer that dies.

#include <Cordel/Util/detail/Descriptor.h>

#include <sys/types.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace Cordel::Util::detail {

class AtomicFileStore {
public:
    // The modes are the file's and those of the folders made for it.
    AtomicFileStore(std::string path, mode_t fileMode, mode_t folderMode);

    enum class State {
        Missing,    // there is no file
        Read,       // text holds it whole
        Unusable,   // not a regular file, or larger than asked for
        Unreadable, // it is there but could not be read
    };
    struct Contents {
        State state = State::Missing;
        std::string text;
    };
    Contents Read(std::size_t maxSize) const;

    // Held from a writer's read to its replace.
    class Lock {
    private:
        friend class AtomicFileStore;
        explicit Lock(Descriptor file) : file(std::move(file)) {}
        Descriptor file;
    };
    // Makes the missing folders on the way to the file and waits for the lock file; nothing when
    // either cannot be had. The holder is the only writer, so temporary files of earlier writers
    // still beside the file are those of writers that died: they are removed.
    [[nodiscard]] std::optional<Lock> TakeLock() const;

    bool Replace(std::string_view text) const;
    // A file that its owner cannot use may still hold something its owner wants back: it is
    // renamed to "<path>.corrupt-XXXXXX" rather than overwritten.
    bool MoveAside() const;

    std::string const& GetPath() const { return path; }

private:
    void removeStaleTemporaries() const;

    std::string path;
    mode_t fileMode;
    mode_t folderMode;
};

// Waits until the folder has recorded its entries' latest names.
void SyncFolder(std::string const& folder);

} // namespace Cordel::Util::detail
