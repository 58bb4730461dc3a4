#include "bench/ColdFiles.h"

#include "platform/posix/Descriptor.h"

#include <fcntl.h>
#include <unistd.h>

namespace velmo::bench {

void forgetContent(const std::string& path) {
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    ::fsync(file.get()); // Only what is on the disk can be dropped.
#ifdef POSIX_FADV_DONTNEED
    ::posix_fadvise(file.get(), 0, 0, POSIX_FADV_DONTNEED);
#endif
}

} // namespace velmo::bench
