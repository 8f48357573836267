#pragma once

#include "viewport/files/common/Decompress.h"
#include "viewport/files/common/GrowingText.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

namespace vellum::viewport {

/// Uncompresses a file of gzip, zstd or xz on a thread of its own, while its text is read.
///
///     DecompressAhead ahead(bytes, limit, text, progress);
///     ... ahead.beyond(0) ... ahead.beyond(1000) ...
///     Result<std::string_view> const all = ahead.whole();     // now in `text`
///
/// The progress is called on the thread of the caller, who is waiting then. Without a second thread, or where
/// the text is so much larger than its bytes that it would have to be moved, nothing is there before whole(),
/// which gives the same as decompress().
class DecompressAhead : public GrowingText {
public:
    /// Bytes, progress and place must outlive it.
    /// \param text gets what whole() has found
    DecompressAhead(std::string_view compressed, std::uint64_t limit, std::optional<DecompressedText>& text,
                    Progress const& progress);

    /// Gives up what is not done yet.
    ~DecompressAhead() override;

    std::string_view beyond(std::size_t known) override;
    std::uint64_t expectedSize() const override;
    Result<std::string_view> whole() override;

private:
    class Work;
    std::unique_ptr<Work> work;
    std::optional<DecompressedText>& text;
    Progress const& progress;
};

}  // namespace vellum::viewport
