#include "base/instance.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "base/files.h"

namespace {

// Lock files are never removed: a process that had just opened one would lock a file that nobody else sees.
// The sticky bit asks those who clean such folders to leave them too.
constexpr mode_t LOCK_FILE_MODE = S_ISVTX | S_IRUSR | S_IWUSR;

}  // namespace

InstanceLock::InstanceLock(InstanceLock&& other) noexcept
    : claimed_number(std::exchange(other.claimed_number, 0)),
      descriptor(std::exchange(other.descriptor, -1)) {}

InstanceLock& InstanceLock::operator=(InstanceLock&& other) noexcept {
    if (this == &other) return *this;
    release();
    claimed_number = std::exchange(other.claimed_number, 0);
    descriptor = std::exchange(other.descriptor, -1);
    return *this;
}

void InstanceLock::release() {
    if (descriptor >= 0) close(descriptor);
    descriptor = -1;
    claimed_number = 0;
}

InstanceLock claim_instance(const std::string& folder, const std::string& name) {
    InstanceLock lock;
    if (folder.empty()) return lock;
    for (int number = 0; number < INSTANCE_LIMIT; ++number) {
        const std::string path = folder + name + "_sem" + std::to_string(number);
        const int descriptor = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
        if (descriptor < 0) return lock;
        const int status = try_lock(descriptor);
        if (status == 0) {
            fchmod(descriptor, LOCK_FILE_MODE);
            lock.descriptor = descriptor;
            lock.claimed_number = number;
            return lock;
        }
        close(descriptor);
        if (status != EWOULDBLOCK) return lock;
    }
    return lock;
}
