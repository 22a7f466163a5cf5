#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <memory>
#include <utility>
#include <vector>

#include "HostUtil.h"

namespace
{
// As the kernel's own limit.
constexpr int MAX_LINKS = 40;

// Under a file that is no folder: opening, creating or renaming anything here fails, whatever is appended to it.
const char* const NOWHERE = "/dev/null";

enum class Missing
{
    Allowed,
    Refused,
};

std::string& Root()
{
    static std::string root = "/";
    return root;
}

// In front of a logical path.
const std::string& RealRoot()
{
    static const std::string& none = *new std::string;  // never destroyed: other destructors may still log
    return Root() == "/" ? none : Root();
}

bool IsLink(const std::string& path)
{
    struct stat status;
    return lstat(path.c_str(), &status) == 0 && S_ISLNK(status.st_mode);
}

bool IsFolder(const std::string& path)
{
    struct stat status;
    return lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

std::string LinkTarget(const std::string& path)
{
    char target[PATH_MAX];
    const ssize_t length = readlink(path.c_str(), target, sizeof target);
    return length > 0 ? std::string(target, static_cast<std::size_t>(length)) : std::string();
}

// Follows one path component by component, as the kernel would if the host root were its root.
class Walk
{
public:
    Walk(const std::string& path, bool followLast) : followLast_(followLast) { Prepend(path); }

    // The logical path without links, "." and ".."; nothing when there are too many links, or when a component is
    // missing that must not be.
    std::optional<std::string> Resolve(Missing missing)
    {
        while (!pending_.empty()) {
            const std::string name = std::move(pending_.back());
            pending_.pop_back();
            if (!Step(name) || (missing == Missing::Refused && !Exists())) {
                return std::nullopt;
            }
        }
        return reached_.empty() ? "/" : reached_;
    }

private:
    void Prepend(const std::string& path)
    {
        std::vector<std::string> names;
        for (std::size_t begin = 0, end = 0; end != std::string::npos; begin = end + 1) {
            end = path.find('/', begin);
            std::string name = path.substr(begin, end - begin);
            if (!name.empty() && name != ".") {
                names.push_back(std::move(name));
            }
        }
        // The next name is the last one.
        pending_.insert(pending_.end(), std::make_move_iterator(names.rbegin()), std::make_move_iterator(names.rend()));
    }

    bool Step(const std::string& name)
    {
        if (name == "..") {
            reached_.erase(reached_.find_last_of('/') != std::string::npos ? reached_.find_last_of('/') : 0);
            return true;
        }
        const std::string next = reached_ + "/" + name;
        if ((!followLast_ && pending_.empty()) || !IsLink(RealRoot() + next)) {
            reached_ = next;
            return true;
        }
        return FollowLink(LinkTarget(RealRoot() + next));
    }

    bool FollowLink(const std::string& target)
    {
        if (target.starts_with('/')) {
            reached_.clear();
        }
        Prepend(target);
        return ++links_ <= MAX_LINKS;
    }

    bool Exists() const
    {
        const std::string real = RealRoot() + reached_;
        return pending_.empty() ? access(real.c_str(), F_OK) == 0 : IsFolder(real);
    }

    std::vector<std::string> pending_;  // the last one first
    std::string reached_;               // logical, empty for the root
    const bool followLast_;
    int links_ = 0;
};

std::string Resolved(const std::string& path, bool followLast)
{
    const std::optional<std::string> logical = Walk(path, followLast).Resolve(Missing::Allowed);
    // The kernel must not meet a link loop of another root: it would follow its absolute links on this machine.
    return logical.has_value() ? RealRoot() + *logical : NOWHERE + ("/" + path);
}
}  // namespace

void SetHostRoot(const std::string& root)
{
    std::string absolute = std::filesystem::absolute(root).lexically_normal().string();
    while (absolute.size() > 1 && absolute.back() == '/') {
        absolute.pop_back();
    }
    Root() = absolute;
}

const std::string& HostRoot()
{
    return Root();
}

bool IsRealHost()
{
    return Root() == "/";
}

std::string HostPath(const std::string& path)
{
    return IsRealHost() ? path : Resolved(path, true);
}

std::string HostPathNoFollow(const std::string& path)
{
    return IsRealHost() ? path : Resolved(path, false);
}

std::optional<std::string> HostRealPath(const std::string& path)
{
    if (!IsRealHost()) {
        return path.empty() ? std::nullopt : Walk(path, true).Resolve(Missing::Refused);
    }
    const std::unique_ptr<char, void (*)(void*)> resolved(realpath(path.c_str(), nullptr), std::free);
    return resolved != nullptr ? std::optional<std::string>(resolved.get()) : std::nullopt;
}

bool File_Exists(const char* path)
{
    struct stat status;
    return path != nullptr && stat(HostPath(path).c_str(), &status) == 0;
}
