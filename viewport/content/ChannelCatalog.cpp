#include "viewport/content/ChannelCatalog.h"

#include <chrono>
#include <system_error>
#include <utility>

namespace vellum::viewport {

ChannelCatalog::ChannelCatalog(std::function<void()> wake) : wake(std::move(wake)) {}

ChannelCatalog::~ChannelCatalog() {
    setContent(nullptr);
}

void ChannelCatalog::setContent(std::shared_ptr<Content const> newContent) {
    follow(std::move(newContent));
    known.clear();
    knownFiles.reset();
    outdated.clear();
    areFilesOutdated = false;
}

void ChannelCatalog::follow(std::shared_ptr<Content const> newContent) {
    _stop();
    content = std::move(newContent);
    nameList = content != nullptr ? channelNames(*content) : std::vector<std::string>();
    for (auto const& entry : known) {
        outdated.insert(entry.first);
    }
    areFilesOutdated = knownFiles.has_value();
}

void ChannelCatalog::_stop() {
    isCancelled = true;
    if (worker.joinable()) {
        worker.join();
    }
    running = {};
    isCancelled = false;
}

ChannelFacts const* ChannelCatalog::facts(std::string const& name) {
    poll();
    auto const found = known.find(name);
    if (found == known.end() || outdated.count(name) != 0) {
        _start(name);
    }
    if (found == known.end()) {
        return nullptr;
    }
    return found->second ? &*found->second : nullptr;
}

std::vector<FileFacts> const* ChannelCatalog::files() {
    poll();
    if (!knownFiles || areFilesOutdated) {
        _start(std::nullopt);
    }
    return knownFiles ? &*knownFiles : nullptr;
}

bool ChannelCatalog::poll() {
    if (!running.valid() || running.wait_for(std::chrono::seconds(0)) != std::future_status::ready) {
        return false;
    }
    worker.join();
    Finding finding = running.get();
    if (finding.name) {
        outdated.erase(*finding.name);
        known[*finding.name] = std::move(finding.channel);
    } else {
        areFilesOutdated = false;
        knownFiles = std::move(finding.files);
    }
    return true;
}

/// Nothing where something is computed already: whoever asks does so again.
void ChannelCatalog::_start(std::optional<std::string> const& name) {
    if (content == nullptr || running.valid()) {
        return;
    }
    auto const compute = [this, name, from = content] {
        Finding finding;
        finding.name = name;
        if (name) {
            finding.channel = ChannelFacts::of(*from, *name, isCancelled);
        } else {
            finding.files = factsOfFiles(*from, isCancelled);
        }
        return finding;
    };
    std::promise<Finding> promise;
    running = promise.get_future();
    auto work = [compute, wake = wake](std::promise<Finding> result) {
        result.set_value(compute());
        if (wake) {
            wake();
        }
    };
    try {
        worker = std::thread(std::move(work), std::move(promise));
    } catch (std::system_error const&) {
        running = {};  // there is no thread now; perhaps there is one when somebody asks again
    }
}

}  // namespace vellum::viewport
