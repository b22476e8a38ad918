// Memory such as the store's owners have it, with guard bytes around each piece so that a copy that goes too
// far shows.

#pragma once

#include "app/snapshot_store.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace sonorelle {

class CGuardedPiece {
public:
    explicit CGuardedPiece(std::int32_t size)
        : bytes_(static_cast<std::size_t>(size) + 2 * kGuard, kPattern), size_(size) {
        std::fill_n(bytes_.begin() + kGuard, size, std::byte{0});
    }
    std::byte* Data() { return bytes_.data() + kGuard; }
    std::int32_t Size() const { return size_; }
    std::string Content() const {
        return {reinterpret_cast<const char*>(bytes_.data()) + kGuard, static_cast<std::size_t>(size_)};
    }
    void Put(const std::string& content) {
        std::transform(content.begin(), content.end(), Data(),
                       [](char c) { return static_cast<std::byte>(c); });
    }
    bool GuardsHold() const {
        const auto isPattern = [](std::byte b) { return b == kPattern; };
        return std::all_of(bytes_.begin(), bytes_.begin() + kGuard, isPattern) &&
               std::all_of(bytes_.end() - kGuard, bytes_.end(), isPattern);
    }

private:
    static constexpr std::ptrdiff_t kGuard = 32;
    static constexpr std::byte kPattern{0xA5};
    std::vector<std::byte> bytes_;
    std::int32_t size_;
};

// An arrangement in the driver's manner: settings, arrays over all notes, and two rows a note.
class CSnapshotArrangement {
public:
    static constexpr std::int32_t kNoteBytes = 28;
    static constexpr std::int32_t kRowBytes = 16;
    static constexpr std::int32_t kChordBytes = 16;
    static constexpr std::int32_t kLegacyBytes = 8;

    CSnapshotArrangement(CSnapshotStore& store, std::int32_t notes) : store_(store) {
        for (int i = 0; i < 20; ++i) Add(4, i < 15 ? 1.0F : i < 18 ? 1.1F : 1.2F);
        notes_ = Add(kNoteBytes * notes, 1.1F);
        for (std::int32_t i = 0; i < notes; ++i) {
            Add(kRowBytes, 1.0F);
            Add(kRowBytes, 1.1F);
        }
        store_.AddElement(nullptr, kLegacyBytes * notes, 1.0F, false);
        chords_ = Add(kChordBytes * notes, 1.1F);
        capacity_ = notes;
    }

    // One note more, as a split makes it: both arrays move to larger memory, two rows come in addition.
    void Grow() {
        ++capacity_;
        Move(notes_, kNoteBytes * capacity_);
        Move(chords_, kChordBytes * capacity_);
        Add(kRowBytes, 10001.0F);
        Add(kRowBytes, 10001.1F);
    }

    // Writes a random number into a random place.
    void Edit(std::mt19937& random) {
        CGuardedPiece& piece = *pieces_[random() % pieces_.size()];
        piece.Data()[random() % static_cast<std::uint32_t>(piece.Size())] = static_cast<std::byte>(random());
    }
    void Fill(std::mt19937& random) {
        for (const auto& piece : pieces_)
            std::generate_n(piece->Data(), piece->Size(), [&] { return Byte(random); });
    }

    // The bytes of every piece, in the order in which they were registered.
    std::vector<std::string> Content() const {
        std::vector<std::string> content;
        for (const auto& piece : pieces_) content.push_back(piece->Content());
        return content;
    }
    bool GuardsHold() const {
        return std::all_of(pieces_.begin(), pieces_.end(),
                           [](const auto& piece) { return piece->GuardsHold(); });
    }

private:
    static std::byte Byte(std::mt19937& random) { return static_cast<std::byte>(random()); }

    std::size_t Add(std::int32_t size, float version) {
        pieces_.push_back(std::make_unique<CGuardedPiece>(size));
        store_.AddElement(pieces_.back()->Data(), size, version);
        return pieces_.size() - 1;
    }
    void Move(std::size_t index, std::int32_t size) {
        auto larger = std::make_unique<CGuardedPiece>(size);
        larger->Put(pieces_[index]->Content());
        store_.ReplaceElement(pieces_[index]->Data(), pieces_[index]->Size(), larger->Data(), size);
        pieces_[index] = std::move(larger);
    }

    CSnapshotStore& store_;
    std::vector<std::unique_ptr<CGuardedPiece>> pieces_;
    std::size_t notes_ = 0;
    std::size_t chords_ = 0;
    std::int32_t capacity_ = 0;
};

// Whether `now` holds what `then` held: pieces that came later and what was added behind old ones do not
// count.
inline bool HoldsContent(const std::vector<std::string>& now, const std::vector<std::string>& then) {
    for (std::size_t i = 0; i < then.size(); ++i)
        if (now[i].compare(0, then[i].size(), then[i]) != 0) return false;
    return now.size() >= then.size();
}

// What the store has of a snapshot.
inline std::string Bytes(const CSnapshotStore& store, std::int32_t index) {
    return {reinterpret_cast<const char*>(store.GetSnapshotData(index)),
            static_cast<std::size_t>(store.GetSnapshotSize(index))};
}

inline std::vector<std::int32_t> Sizes(const CSnapshotStore& store, std::int32_t index) {
    std::vector<std::int32_t> sizes(static_cast<std::size_t>(store.GetSizeCount(index)));
    store.GetSizes(index, sizes);
    return sizes;
}

} // namespace sonorelle
