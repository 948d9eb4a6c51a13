#include "tools/files/file_digest.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <future>
#include <system_error>
#include <thread>

#include "core/entry.h"
#include "engine/mapped_file.h"
#include "tools/files/cut_file.h"
#include "tools/files/input_file.h"
#include "tools/files/mapping_progress.h"
#include "tools/rules.h"

namespace {

FileDigest refused(const Refusal& refusal) {
    return {.refusal = refusal};
}

/// Digests the bytes, unless there is a fault; one is that they are cut meanwhile.
void digestBytes(MappedInput& input, Progress progress, std::uint8_t* digest) {
    if (input.fault != FileFault::none) {
        return;
    }
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
                           ? refused(refusalBy(FileFault::open,
                                               inputName("-") + ": can be read only once"))
                           : digestFile(*path, progress);
            });
            digests_.push_back(tasks_.back().get_future());
        }
    }

    /// Begins no further task, and waits for those that run.
    ~DigestTasks() { next_ = tasks_.size(); }
    DigestTasks(const DigestTasks&) = delete;
    DigestTasks& operator=(const DigestTasks&) = delete;

    /// Has the other cores work on them, as far as threads can be had.
    void startThreads() {
        const std::size_t atOnce =
            std::min<std::size_t>(std::thread::hardware_concurrency(), tasks_.size());
        try {
            while (threads_.size() + 1 < atOnce) {
                threads_.emplace_back([this] {
                    while (runNext()) {
                    }
                });
            }
        } catch (const std::system_error&) {
            // Those that there are do the work, and the calling thread too.
        }
    }

    /// The digest of a file. Until it is there, the calling thread works on the tasks.
    FileDigest digestOf(std::size_t place) {
        std::future<FileDigest>& digest = digests_[place];
        while (digest.wait_for(std::chrono::seconds(0)) != std::future_status::ready && runNext()) {
        }
        return digest.get();
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

FileDigest digestFile(const std::string& path, Progress progress) {
    const std::string name = inputName(path) + ": ";
    // A copy of standard input has no name: the mapping keeps it.
    InputFile file;
    if (const auto failure = openInputFile(path, file)) {
        return refused(refusalBy(FileFault::open, *failure));
    }
    MappedInput input;
    mapInputFile(input, file.path.c_str());
    FileDigest result;
    digestBytes(input, progress, result.digest.data());
    if (auto refusal = inputFileRefusal(input)) {
        refusal->text.insert(0, name);
        return {.refusal = refusal,
                .isMissing = input.fault == FileFault::open && input.openError == ENOENT};
    }
    if (const auto remark = inputFileRemark(input)) {
        result.remark = name + *remark;
    }
    return result;
}

void digestFiles(const std::vector<std::string>& paths,
                 const std::function<void(std::size_t, const FileDigest&)>& take) {
    DigestTasks tasks(paths);
    tasks.startThreads();
    for (std::size_t place = 0; place < paths.size(); ++place) {
        take(place, tasks.digestOf(place));
    }
}
