#include <fcntl.h>
#include <link.h>
#include <linux/landlock.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "platform/confinement.h"
#include "text/exception.h"
#include "text/strings.h"

namespace corvane::platform {
namespace {

using Rights = std::uint64_t;

// The first versions that know a right. The headers of older systems do not name the last two.
constexpr int referVersion = 2;
constexpr int truncateVersion = 3;
constexpr int deviceControlVersion = 5;
constexpr Rights truncateRight = Rights{1} << 14;
constexpr Rights deviceControlRight = Rights{1} << 15;

constexpr Rights readRights = LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_READ_DIR;
constexpr Rights runRights = LANDLOCK_ACCESS_FS_EXECUTE | LANDLOCK_ACCESS_FS_READ_FILE;
// No nodes of devices: the superuser's programs would reach whole disks through them.
constexpr Rights changeRights =
    readRights | LANDLOCK_ACCESS_FS_WRITE_FILE | truncateRight | deviceControlRight |
    LANDLOCK_ACCESS_FS_REMOVE_DIR | LANDLOCK_ACCESS_FS_REMOVE_FILE | LANDLOCK_ACCESS_FS_MAKE_DIR |
    LANDLOCK_ACCESS_FS_MAKE_REG | LANDLOCK_ACCESS_FS_MAKE_SOCK | LANDLOCK_ACCESS_FS_MAKE_FIFO |
    LANDLOCK_ACCESS_FS_MAKE_SYM | LANDLOCK_ACCESS_FS_REFER;
// Those that a rule for a file may have.
constexpr Rights fileRights =
    runRights | LANDLOCK_ACCESS_FS_WRITE_FILE | truncateRight | deviceControlRight;

bool confined = false;

// All that the kernel is asked to watch over.
Rights watchedBy(int version) {
    Rights rights = LANDLOCK_ACCESS_FS_MAKE_SYM | (LANDLOCK_ACCESS_FS_MAKE_SYM - 1);
    rights |= version >= referVersion ? Rights{LANDLOCK_ACCESS_FS_REFER} : 0;
    rights |= version >= truncateVersion ? truncateRight : 0;
    rights |= version >= deviceControlVersion ? deviceControlRight : 0;
    return rights;
}

Rights rightsOf(Access access) {
    switch (access) {
        case Access::Change:
            return changeRights;
        case Access::Read:
            return readRights;
        case Access::Run:
            return runRights;
        case Access::Look:
            break;
    }
    return LANDLOCK_ACCESS_FS_READ_FILE;
}

FileDesc createRules(int version) {
    landlock_ruleset_attr watched{};
    watched.handled_access_fs = watchedBy(version);
    const long fd = ::syscall(SYS_landlock_create_ruleset, &watched, sizeof watched, 0);
    if (fd == -1) {
        throw IOException("landlock_create_ruleset() fail", errno);
    }
    return FileDesc(static_cast<int>(fd));
}

void refuse(const std::string& path, int error) {
    throw IOException(format("'%s': %s", path.c_str(), std::strerror(error)), error);
}

// A listed folder that is a file would be refused to clients later (fileutil/reach.h), so at once.
void grant(int rules, const Grant& wanted, int version) {
    const bool isFolder = wanted.access == Access::Change || wanted.access == Access::Read;
    const int flags = O_PATH | O_CLOEXEC | (isFolder && !wanted.isOwn ? O_DIRECTORY : 0);
    const FileDesc file(::open(wanted.path.c_str(), flags));
    if (file == -1) {
        if (wanted.isOwn) {
            return;
        }
        refuse(wanted.path, errno);
    }
    struct stat info {};
    const bool isDirectory = ::fstat(file, &info) == 0 && S_ISDIR(info.st_mode);
    landlock_path_beneath_attr rule{};
    rule.allowed_access =
        rightsOf(wanted.access) & watchedBy(version) & (isDirectory ? ~Rights{0} : fileRights);
    rule.parent_fd = file;
    if (::syscall(SYS_landlock_add_rule, rules, LANDLOCK_RULE_PATH_BENEATH, &rule, 0) != 0) {
        refuse(wanted.path, errno);
    }
}

// The loader and the libraries that this program was loaded with, and the directory of the C
// library, where those of the window tool lie. Other programs may have some elsewhere.
int addLibraries(dl_phdr_info* object, std::size_t /*size*/, void* grants) {
    const std::string_view path = object->dlpi_name;
    const std::size_t slash = path.rfind('/');
    const std::string_view name = path.substr(slash + 1);  // npos + 1 is 0
    if (startsWith(path, "/")) {
        auto& list = *static_cast<std::vector<Grant>*>(grants);
        const Access access = startsWith(name, "ld-") ? Access::Run : Access::Look;
        list.push_back({std::string(path), access, true});
        if (startsWith(name, "libc.so")) {
            list.push_back({std::string(path.substr(0, slash)), Access::Look, true});
        }
    }
    return 0;
}

std::vector<Grant> neededByPrograms() {
    std::vector<Grant> grants{{"/dev/null", Access::Change, true}};
    ::dl_iterate_phdr(addLibraries, &grants);
    return grants;
}

}  // namespace

int Confinement::kernelVersion() {
    const long version =
        ::syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
    return version == -1 ? 0 : static_cast<int>(version);
}

// Whatever the server does to a file it does by opening it to write first, which every version
// watches over. Other programs may call truncate(2).
Confinement::Confinement(const std::vector<Grant>& grants, int version) {
    if (version < 1) {
        throw Exception("this kernel has no Landlock, or it is switched off");
    }
    rules_ = createRules(version);
    bool runsPrograms = false;
    for (const Grant& wanted : grants) {
        const bool isProgram = wanted.access == Access::Run;
        if (isProgram && !wanted.isOwn && version < truncateVersion) {
            throw Exception(
                format("'%s': this kernel cannot keep a program from truncating files "
                       "anywhere; Linux 6.2 can",
                       wanted.path.c_str()));
        }
        runsPrograms = runsPrograms || isProgram;
        grant(rules_, wanted, version);
    }
    if (runsPrograms) {
        for (const Grant& needed : neededByPrograms()) {
            grant(rules_, needed, version);
        }
    }
}

void Confinement::enforce() const {
    if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 ||
        ::syscall(SYS_landlock_restrict_self, static_cast<int>(rules_), 0) != 0) {
        throw IOException("landlock_restrict_self() fail", errno);
    }
    confined = true;
}

bool isConfined() { return confined; }

}  // namespace corvane::platform
