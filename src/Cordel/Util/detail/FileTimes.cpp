#include <Cordel/Util/detail/FileTimes.h>

#include <fcntl.h>
#include <sys/stat.h>

namespace Cordel::Util::detail {

namespace {

timespec toTimespec(checked_value<FileTimeStamp> const& stamp)
{
    if (!stamp.IsSet())
        return timespec{0, UTIME_OMIT};
    return timespec{static_cast<time_t>(stamp.Get().seconds), stamp.Get().nanoseconds};
}

FileTimeStamp fromTimespec(timespec const& t)
{
    return FileTimeStamp{static_cast<std::int64_t>(t.tv_sec), static_cast<std::int32_t>(t.tv_nsec)};
}

} // namespace

bool GetPathTime(String const& path, FileTime* time)
{
    struct stat info;
    if (::stat(path.c_str(), &info) != 0)
        return false;
    if (time) {
        time->accessTime = fromTimespec(info.st_atim);
        time->modificationTime = fromTimespec(info.st_mtim);
    }
    return true;
}

bool SetPathTime(String const& path, FileTime const& time)
{
    // With nothing to change the system succeeds without looking at the path; a missing one must
    // still fail.
    if (!time.accessTime.IsSet() && !time.modificationTime.IsSet())
        return GetPathTime(path, nullptr);
    timespec const times[2] = {toTimespec(time.accessTime), toTimespec(time.modificationTime)};
    return ::utimensat(AT_FDCWD, path.c_str(), times, 0) == 0;
}

} // namespace Cordel::Util::detail
