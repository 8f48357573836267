#pragma once

#include "viewport/content/ChannelFacts.h"
#include "viewport/content/Content.h"

#include <atomic>
#include <functional>
#include <future>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace vellum::viewport {

/// What is known about the values of what is open. Each fact is computed once for each content, when somebody
/// asks for it first, on another thread:
///
///     catalog.setContent(content);
///     ...
///     if (ChannelFacts const* const facts = catalog.facts("vx")) ...   // each frame; null until it is known
///
/// No call waits, but setContent() and the destructor wait some milliseconds for what is being computed to
/// stop.
class ChannelCatalog {
public:
    /// \param wake is called on another thread when a fact is known; may be empty
    explicit ChannelCatalog(std::function<void()> wake = {});
    ~ChannelCatalog();
    ChannelCatalog(ChannelCatalog const&) = delete;
    ChannelCatalog& operator=(ChannelCatalog const&) = delete;

    /// Forgets the facts of the former content.
    void setContent(std::shared_ptr<Content const> newContent);

    /// The content is another frame of the same files: facts() and files() give those of the former one until
    /// they are known.
    void follow(std::shared_ptr<Content const> newContent);

    /// Takes what has been found meanwhile; whether there is something. facts() and files() do so, too.
    bool poll();

    /// See channelNames().
    std::vector<std::string> const& names() const { return nameList; }

    /// Null where it is not known yet, and where there are no numbers of that name.
    ChannelFacts const* facts(std::string const& name);

    /// Null where they are not known yet.
    std::vector<FileFacts> const* files();

private:
    /// What one computation gives.
    struct Finding {
        std::optional<std::string> name;  // nothing: of the files
        std::optional<ChannelFacts> channel;
        std::vector<FileFacts> files;
    };

    void _stop();
    void _start(std::optional<std::string> const& name);

    std::function<void()> wake;
    std::shared_ptr<Content const> content;
    std::vector<std::string> nameList;
    std::map<std::string, std::optional<ChannelFacts>> known;
    std::optional<std::vector<FileFacts>> knownFiles;
    std::set<std::string> outdated;  // of the known ones, those of a former frame
    bool areFilesOutdated = false;   // alike
    std::atomic<bool> isCancelled{false};
    std::future<Finding> running;  // not valid: nothing is computed
    std::thread worker;            // of it
};

}  // namespace vellum::viewport
