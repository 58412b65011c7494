#include "init.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <optional>
#include <set>

#include "held_signals.h"
#include "init_plan.h"
#include "kqtype.h"
#include "owner.h"
#include "text.h"
#include "utl.h"

namespace {

namespace fs = std::filesystem;

// What the server puts behind the directory: a node, an archive directory and an archive file.
constexpr size_t longest_directory = KQ_PATHNAME_MAX - 70;

struct failure {
    exit_status status;
    std::string file;
    std::string text;
    std::string hint = {};
};

std::string hint_for_errno(int reason) {
    if (reason == EACCES || reason == EPERM)
        return "Choose a directory whose parent you may write in; nothing was written.";
    if (reason == ENOSPC || reason == EDQUOT) return "Free some space; nothing was written.";
    if (reason == EROFS) return "Choose a directory on a file system that is mounted for writing.";
    if (reason == ENOTDIR) return "Choose a path that leads through directories only.";
    return "";
}

failure could_not(const std::string& file, int reason) {
    return {exit_failed, file, std::strerror(reason), hint_for_errno(reason)};
}

bool write_all(int file, const std::string& text) {
    size_t written = 0;
    while (written < text.size()) {
        ssize_t count = write(file, text.data() + written, text.size() - written);
        if (count < 0 && errno != EINTR) return false;
        if (count > 0) written += static_cast<size_t>(count);
    }
    return true;
}

class initialiser {
  public:
    initialiser(const init_options& options, output& out) : options_(options), out_(out) {}

    exit_status run() {
        std::optional<failure> failed = make_for_owner();
        if (!failed) return tell();
        for (auto path = made_.rbegin(); path != made_.rend(); ++path)
            std::remove(path->c_str());
        return out_.fail(failed->status, failed->text, failed->file, failed->hint);
    }

  private:
    std::optional<failure> make_for_owner() {
        std::error_code error;
        root_ = fs::weakly_canonical(fs::absolute(options_.directory, error), error);
        if (error) return could_not(options_.directory, error.value());
        while (root_.size() > 1 && root_.back() == '/')
            root_.pop_back();
        if (std::optional<failure> bad = why_unfit()) return bad;
        plan_ = plan_init(options_.kind, root_ == "/" ? "" : root_);
        std::set<std::string> planned;
        for (const std::string& directory : plan_.directories)
            planned.insert(root_ + "/" + directory);
        for (const planned_file& file : plan_.files)
            planned.insert(root_ + "/" + file.path);
        handed_over to_owner(nearest_directory(), planned, handed_over::named_by::root);
        return make();
    }

    // Whose owner gets what is made.
    std::string nearest_directory() const {
        fs::path nearest = root_;
        while (!fs::exists(nearest))
            nearest = nearest.parent_path();
        return nearest;
    }

    std::optional<failure> make() {
        if (std::optional<failure> failed = make_directory(root_)) return failed;
        for (const std::string& directory : plan_.directories)
            if (mkdir((root_ + "/" + directory).c_str(), 0750) == 0)
                made_.push_back(root_ + "/" + directory);
            else
                return not_made(root_ + "/" + directory);
        for (const planned_file& file : plan_.files)
            if (std::optional<failure> failed = write_file(file)) return failed;
        return std::nullopt;
    }

    std::optional<failure> why_unfit() const {
        if (root_.size() > longest_directory)
            return failure{exit_refused, options_.directory,
                           "its path has " + std::to_string(root_.size()) +
                               " characters, more than " + std::to_string(longest_directory) +
                               ": the paths of archive files would be too long"};
        if (is_valid_pathname(root_.c_str(), 0) == 0)
            return failure{exit_refused, options_.directory,
                           "its path has a control character: paths of archive files may not"};
        std::error_code error;
        fs::file_status status = fs::status(root_, error);
        if (status.type() == fs::file_type::not_found) return std::nullopt;
        if (!fs::is_directory(status))
            return could_not(options_.directory, error ? error.value() : ENOTDIR);
        bool empty = fs::is_empty(root_, error);
        if (error) return could_not(options_.directory, error.value());
        if (empty) return std::nullopt;
        return not_empty();
    }

    failure not_empty() const {
        return {exit_refused, options_.directory, "is not empty",
                "Give a new directory; nothing was written."};
    }

    // By errno. What exists now did not a moment ago: somebody else fills the directory.
    failure not_made(const std::string& path) const {
        return errno == EEXIST ? not_empty() : could_not(path, errno);
    }

    std::optional<failure> make_directory(const std::string& path) {
        std::string parent = fs::path(path).parent_path();
        if (!parent.empty() && !fs::exists(parent))
            if (std::optional<failure> failed = make_directory(parent)) return failed;
        if (mkdir(path.c_str(), 0750) == 0)
            made_.push_back(path);
        else if (errno != EEXIST)
            return could_not(path, errno);
        return std::nullopt;
    }

    std::optional<failure> write_file(const planned_file& planned) {
        std::string path = root_ + "/" + planned.path;
        int file =
            open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, planned.mode);
        if (file < 0) return not_made(path);
        made_.push_back(path);
        bool written = write_all(file, planned.text) && fsync(file) == 0;
        int reason = errno;
        bool closed = close(file) == 0;
        if (written && closed) return std::nullopt;
        return could_not(path, written ? errno : reason);
    }

    std::string shown_path(const std::string& inside) const {
        std::string path = options_.directory;
        while (path.size() > 1 && path.back() == '/')
            path.pop_back();
        if (inside.empty()) return path;
        return path + (path == "/" ? "" : "/") + inside;
    }

    std::vector<std::string> shown_instances() const {
        std::vector<std::string> shown;
        for (const std::string& instance : plan_.instances)
            shown.push_back(shown_path(instance));
        return shown;
    }

    std::vector<std::string> words() const {
        std::vector<std::string> words = shown_instances();
        std::transform(words.begin(), words.end(), words.begin(), shell_word);
        return words;
    }

    exit_status tell() {
        std::vector<std::string> files;
        for (const planned_file& file : plan_.files)
            files.push_back(shown_path(file.path));
        std::vector<std::string> next = {"kqarch check " + join(words(), " "),
                                         "kqarch show " + words().front()};
        out_.set("kind", options_.kind);
        out_.set("instances", shown_instances());
        out_.set("files", files);
        out_.set("next", next);
        out_.print_heading("Wrote " + count_of(plan_.instances.size(), "instance") + " (" +
                           options_.kind + "):");
        for (const std::string& file : files)
            out_.print("  " + visible(file) + "\n");
        out_.print_heading("Next, set the names, hosts and ports of your machines in them, then:");
        for (const std::string& command : next)
            out_.print("  " + visible(command) + "\n");
        return exit_good;
    }

    const init_options& options_;
    output& out_;
    std::string root_;
    init_plan plan_;
    std::vector<std::string> made_;  // taken back when something fails
};

}  // namespace

exit_status run_init(const init_options& options, output& out) {
    for (const char* field : {"kind", "instances", "files", "next"})
        out.set(field, nullptr);
    held_signals until_written;
    return initialiser(options, out).run();
}
