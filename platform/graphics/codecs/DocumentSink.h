// Where an encoded document goes while it is written, piece by piece.
#pragma once

#include "platform/foundation/FileDraft.h"
#include "platform/graphics/Image.h"

#include <cstddef>
#include <span>

namespace quillomat::codecs {

class DocumentSink {
public:
    DocumentSink() = default;
    virtual ~DocumentSink() = default;
    DocumentSink(const DocumentSink&) = delete;
    DocumentSink& operator=(const DocumentSink&) = delete;

    /// A document begins, most likely no longer than that; what came before is forgotten.
    virtual void begin(std::size_t likelyLength) = 0;
    /// Throws nothing: whoever appends has others waiting.
    [[nodiscard]] virtual Status append(std::span<const std::byte> bytes) = 0;
};

class BytesSink final : public DocumentSink {
public:
    void begin(std::size_t likelyLength) override;
    [[nodiscard]] Status append(std::span<const std::byte> bytes) override;
    [[nodiscard]] Bytes take() { return std::move(bytes_); }

private:
    Bytes bytes_;
};

class DraftSink final : public DocumentSink {
public:
    explicit DraftSink(FileDraft& draft) : draft_(draft) {}
    void begin(std::size_t likelyLength) override;
    [[nodiscard]] Status append(std::span<const std::byte> bytes) override;
    /// Of what has come.
    [[nodiscard]] DocumentKey key() const { return key_; }

private:
    FileDraft& draft_;
    Status begun_;
    DocumentKey key_;
};

} // namespace quillomat::codecs
