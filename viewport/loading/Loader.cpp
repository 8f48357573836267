#include "viewport/loading/Loader.h"

#include <atomic>
#include <exception>
#include <new>
#include <system_error>
#include <thread>
#include <utility>

namespace vellum::viewport {

/// One loading, which its thread and the loader share.
struct Loader::Job {
    Options options;
    std::shared_ptr<Content const> content;  // null: it is to be read
    std::atomic<bool> isCancelled{false};

    std::mutex mutex;  // of the next three
    LoadProgress progress;
    LoadOutcome outcome;
    bool isDone = false;

    std::shared_ptr<Job> before;  // whose thread is joined by the thread of this one
    std::thread thread;           // not joinable where it could not be started
};

class Loader::JobObserver : public LoadObserver {
public:
    explicit JobObserver(Job& job) : job(job) {}

    void note(Fault const& what) override {
        std::lock_guard<std::mutex> const lock(job.mutex);
        job.outcome.notes.push_back(what);
    }

    void progress(std::string const& file, std::uint64_t done, std::uint64_t all) override {
        std::lock_guard<std::mutex> const lock(job.mutex);
        if (job.progress.file != file) {
            job.progress.file = file;
        }
        job.progress.done = done;
        job.progress.all = all;
    }

    bool isCancelled() override { return job.isCancelled; }

private:
    Job& job;
};

Loader::Loader(std::function<void()> wake) : wake(std::move(wake)) {}

Loader::~Loader() {
    cancel();
    if (job) {
        _finish(*job);
    }
}

void Loader::start(Options const& options, std::shared_ptr<Content const> kept) {
    auto const next = std::make_shared<Job>();
    next->options = options;
    next->content = std::move(kept);
    std::lock_guard<std::mutex> const lock(mutex);
    if (job) {
        job->isCancelled = true;
    }
    next->before = std::move(job);
    job = next;
    isAwaited = true;
    try {
        next->thread = std::thread([next, wake = wake] { _run(*next, wake); });
    } catch (std::system_error const& error) {
        std::lock_guard<std::mutex> const jobLock(next->mutex);
        next->outcome.fault = Fault{"", std::string("cannot start loading: ") + error.what()};
        next->isDone = true;
    }
}

std::optional<LoadOutcome> Loader::poll() {
    std::lock_guard<std::mutex> const lock(mutex);
    if (!isAwaited) {
        return std::nullopt;
    }
    std::lock_guard<std::mutex> const jobLock(job->mutex);
    if (!job->isDone) {
        return std::nullopt;
    }
    isAwaited = false;
    LoadOutcome outcome = std::exchange(job->outcome, {});
    if (job->isCancelled) {
        outcome.loaded.reset();
        outcome.fault.reset();
        outcome.isCancelled = true;
    }
    return outcome;
}

bool Loader::isLoading() const {
    std::lock_guard<std::mutex> const lock(mutex);
    return isAwaited;
}

LoadProgress Loader::progress() const {
    std::lock_guard<std::mutex> const lock(mutex);
    if (!isAwaited) {
        return {};
    }
    std::lock_guard<std::mutex> const jobLock(job->mutex);
    return job->progress;
}

void Loader::cancel() {
    std::lock_guard<std::mutex> const lock(mutex);
    if (isAwaited) {
        job->isCancelled = true;
    }
}

void Loader::forget() {
    cancel();
    std::lock_guard<std::mutex> const lock(mutex);
    isAwaited = false;
}

/// Waits until the threads of the job and of those before it have ended.
void Loader::_finish(Job& job) {
    if (job.thread.joinable()) {
        job.thread.join();
    } else if (job.before) {
        _finish(*job.before);
    }
}

void Loader::_run(Job& job, std::function<void()> const& wake) {
    if (job.before) {
        _finish(*job.before);
        job.before.reset();
    }
    _load(job);
    {
        std::lock_guard<std::mutex> const lock(job.mutex);
        job.isDone = true;
    }
    if (wake) {
        wake();
    }
}

void Loader::_load(Job& job) {
    // Nobody but this thread looks at the outcome before the job is done; its notes alone grow under the
    // lock.
    std::optional<Fault> fault;
    try {
        JobObserver observer(job);
        if (!job.content) {
            Result<Content> content = Content::load(job.options, observer);
            if (content.isOk()) {
                job.content = std::make_shared<Content const>(std::move(content.value()));
            } else {
                fault = content.fault();
            }
        }
        if (job.content) {
            // A subject uses up what it is made of.
            Content copy = *job.content;
            Result<Subject> subject = Subject::prepare(job.options, copy, observer);
            if (subject.isOk()) {
                job.outcome.loaded.emplace(LoadedContent{std::move(job.options), std::move(job.content),
                                                         std::move(subject.value())});
                return;
            }
            fault = subject.fault();
        }
    } catch (std::bad_alloc const&) {
        fault = Fault{"", "there is not enough memory"};
    } catch (std::exception const& exception) {
        fault = Fault{"", std::string("cannot be loaded: ") + exception.what()};
    }
    if (!fault->isCancelled) {
        job.outcome.fault = std::move(fault);
    }
}

}  // namespace vellum::viewport
