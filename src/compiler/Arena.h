#pragma once

#include <cstddef>
#include <cstring>
#include <memory>
#include <new>
#include <span>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace tn61131::st {

/// Memory for the nodes of trees: given back all at once, no destructor runs.
class Arena {
 public:
    Arena() = default;
    Arena(const Arena&) = delete;
    Arena& operator=(const Arena&) = delete;

    /// A node that lives as long as the arena.
    template <typename T, typename... Args>
    [[nodiscard]] T* New(Args&&... args) {
        static_assert(std::is_trivially_destructible_v<T>);
        return new (Allocate(sizeof(T), alignof(T))) T{std::forward<Args>(args)...};
    }
    /// Elements with their default values that live as long as the arena.
    template <typename T>
    [[nodiscard]] std::span<T> NewArray(std::size_t count) {
        static_assert(std::is_trivially_destructible_v<T>);
        if (count == 0) return {};
        T* first = static_cast<T*>(Allocate(sizeof(T) * count, alignof(T)));
        std::uninitialized_value_construct_n(first, count);
        return {first, count};
    }
    /// A copy of the elements that lives as long as the arena.
    template <typename T>
    [[nodiscard]] std::span<T> Copy(const std::vector<T>& elements) {
        return Copy(std::span<const T>(elements));
    }
    template <typename T>
    [[nodiscard]] std::span<T> Copy(std::span<const T> elements) {
        static_assert(std::is_trivially_copyable_v<T>);
        if (elements.empty()) return {};
        T* first = static_cast<T*>(Allocate(sizeof(T) * elements.size(), alignof(T)));
        std::memcpy(static_cast<void*>(first), elements.data(), sizeof(T) * elements.size());
        return {first, elements.size()};
    }
    [[nodiscard]] std::string_view Copy(std::string_view text) {
        if (text.empty()) return {};
        char* first = static_cast<char*>(Allocate(text.size(), 1));
        std::memcpy(first, text.data(), text.size());
        return {first, text.size()};
    }
    /// Bytes taken from the system.
    [[nodiscard]] std::size_t GetReserved() const noexcept { return reserved_; }

 private:
    static constexpr std::size_t kBlockSize = std::size_t{64} * 1024;

    void* Allocate(std::size_t size, std::size_t alignment) {
        void* place = next_;
        if (next_ == nullptr || std::align(alignment, size, place, left_) == nullptr) {
            const std::size_t blockSize = size + alignment > kBlockSize ? size + alignment : kBlockSize;
            blocks_.push_back(std::make_unique_for_overwrite<std::byte[]>(blockSize));
            reserved_ += blockSize;
            place = blocks_.back().get();
            left_ = blockSize;
            std::align(alignment, size, place, left_);
        }
        next_ = static_cast<std::byte*>(place) + size;
        left_ -= size;
        return place;
    }

    std::vector<std::unique_ptr<std::byte[]>> blocks_;
    std::byte* next_ = nullptr;
    std::size_t left_ = 0;
    std::size_t reserved_ = 0;
};

}  // namespace tn61131::st
