#include "tools/files/file_digest.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <future>
#include <system_error>
#include <thread>
#include <utility>

#include "core/entry.h"
#include "tools/files/cut_file.h"
#include "tools/files/mapping_progress.h"
#include "tools/rules.h"

namespace {

FileDigest refused(const Refusal& refusal) {
    return {.refusal = refusal};
}

/// Digests the bytes; a file with a fault has none. Notes the fault if they are cut meanwhile.
void digestBytes(MappedInput& input, Progress progress, std::uint8_t* digest) {
    std::optional<MappingProgress> bar;
    if (progress == Progress::shown) {
        bar.emplace(input.bytes.size());
    }
    if (!readUncut(
            [&] { coreEntry::ripemd160Digest(input.bytes.data(), input.bytes.size(), digest); })) {
        input.fault = FileFault::cut;
    }
    input.endWhole();
}

/// One task for each file.
class DigestTasks {
public:
    explicit DigestTasks(const std::vector<std::string>& paths) {
        const auto input = std::find(paths.begin(), paths.end(), "-");
        const Progress progress = paths.size() == 1 ? Progress::shown : Progress::silent;
        for (auto path = paths.begin(); path != paths.end(); ++path) {
            tasks_.emplace_back([=] {
                return *path == "-" && path != input
                           ? refused(refusalBy(
                                 FileFault::open,
                                 inputName("-") + ": can be read only once; name it once"))
                           : digestFile(*path, progress);
            });
            digests_.push_back(tasks_.back().get_future());
        }
    }

    /// Begins no further task, and waits for those that run.
    ~DigestTasks() { next_ = tasks_.size(); }
    DigestTasks(const DigestTasks&) = delete;
    DigestTasks& operator=(const DigestTasks&) = delete;

    /// Has a thread for each core work on them, as far as threads can be had.
    void startThreads() {
        const std::size_t atOnce =
            std::min<std::size_t>(std::thread::hardware_concurrency(), tasks_.size());
        try {
            while (threads_.size() < atOnce) {
                threads_.emplace_back([this] {
                    while (runNext()) {
                    }
                });
            }
        } catch (const std::system_error&) {
            // Those that there are do the work, or else the calling thread.
        }
    }

    /// The digest of a file, once it is there. What no thread has begun, the calling one runs.
    FileDigest digestOf(std::size_t place) {
        while (next_ <= place) {
            runNext();
        }
        return digests_[place].get();
    }

private:
    /// False when all have been begun.
    bool runNext() {
        const std::size_t place = next_++;
        if (place >= tasks_.size()) {
            return false;
        }
        tasks_[place]();
        return true;
    }

    std::vector<std::packaged_task<FileDigest()>> tasks_;
    std::vector<std::future<FileDigest>> digests_;
    std::atomic<std::size_t> next_ = 0;
    std::vector<std::jthread> threads_;  ///< the last member: they end before what they work on
};

}  // namespace

DigestedFile::DigestedFile(const std::string& path, Progress progress) {
    const std::string name = inputName(path) + ": ";
    // A copy of standard input has no name: the mapping keeps it.
    if (const auto failure = openInputFile(path, file_)) {
        digest_ = refused(refusalBy(FileFault::open, *failure));
        return;
    }
    mapInputFile(input_, file_.path.c_str());
    digestBytes(input_, progress, digest_.digest.data());
    if (auto refusal = inputFileRefusal(input_)) {
        refusal->text.insert(0, name);
        digest_ = {.refusal = refusal,
                   .isMissing = input_.fault == FileFault::open && input_.openError == ENOENT};
    } else if (const auto remark = inputFileRemark(input_)) {
        digest_.remark = name + *remark;
    }
}

std::optional<std::string> DigestedFile::content(std::size_t most) const {
    if (digest_.refusal.has_value() || input_.bytes.size() > most) {
        return std::nullopt;
    }
    std::string copy;
    copy.resize(input_.bytes.size());
    const bool isRead =
        readUncut([&] { std::memcpy(copy.data(), input_.bytes.data(), copy.size()); });
    return isRead && input_.isWhole() ? std::optional(std::move(copy)) : std::nullopt;
}

FileDigest digestFile(const std::string& path, Progress progress) {
    return DigestedFile(path, progress).digest();
}

void digestFiles(const std::vector<std::string>& paths,
                 const std::function<void(std::size_t, const FileDigest&)>& take) {
    DigestTasks tasks(paths);
    if (paths.size() > 1) {
        tasks.startThreads();
    }
    for (std::size_t place = 0; place < paths.size(); ++place) {
        take(place, tasks.digestOf(place));
    }
}
