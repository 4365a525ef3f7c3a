// SPDX-License-Identifier: MIT
// Which records are equal on some of their fields, found without comparing each with each.
#pragma once

#include "nimba_mgmt_interface.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace nimba {

template <std::size_t count>
using RecordFields = std::array<int32_t _GFX_ALLOCATION_INFO::*, count>;

// What makes an allocation the same one in two snapshots.
inline constexpr RecordFields<6> kIdentity{
    &_GFX_ALLOCATION_INFO::handle,    &_GFX_ALLOCATION_INFO::width,
    &_GFX_ALLOCATION_INFO::height,    &_GFX_ALLOCATION_INFO::size,
    &_GFX_ALLOCATION_INFO::hw_format, &_GFX_ALLOCATION_INFO::at_type};

// What makes allocations alike.
inline constexpr RecordFields<5> kShape{
    &_GFX_ALLOCATION_INFO::width, &_GFX_ALLOCATION_INFO::height, &_GFX_ALLOCATION_INFO::size,
    &_GFX_ALLOCATION_INFO::hw_format, &_GFX_ALLOCATION_INFO::at_type};

template <auto fields>
bool has_same_key(const _GFX_ALLOCATION_INFO& a, const _GFX_ALLOCATION_INFO& b)
{
    return std::ranges::all_of(fields, [&](auto field) { return a.*field == b.*field; });
}

inline constexpr uint32_t kNoKey = UINT32_MAX;

// Numbers the distinct keys of records, from 0 in the order in which they are first met. A key is
// the values of `fields`.
template <auto fields>
class RecordKeys final {
  public:
    // For up to `records` calls of number_of.
    explicit RecordKeys(std::size_t records)
        : places_(std::bit_ceil(records * 2 + 1), kNoKey), mask_{places_.size() - 1}
    {
    }

    // The number of the record's key, a new one when it is met for the first time.
    uint32_t number_of(const _GFX_ALLOCATION_INFO& record)
    {
        const Key key = key_of(record);
        uint32_t& place = places_[place_of(key)];
        if (place == kNoKey) {
            place = static_cast<uint32_t>(keys_.size());
            keys_.push_back(key);
        }
        return place;
    }

    // The number of the record's key; kNoKey when it was not met.
    [[nodiscard]] uint32_t find(const _GFX_ALLOCATION_INFO& record) const
    {
        return places_[place_of(key_of(record))];
    }

    // The number of keys met.
    [[nodiscard]] std::size_t size() const { return keys_.size(); }

  private:
    using Key = std::array<int32_t, fields.size()>;

    static Key key_of(const _GFX_ALLOCATION_INFO& record)
    {
        Key key;
        for (std::size_t index = 0; index < fields.size(); ++index) {
            key[index] = record.*fields[index];
        }
        return key;
    }

    // Applications choose these fields in part. Which keys collide they cannot know: the start
    // value, an address, differs from process to process.
    static std::size_t hash(const Key& key)
    {
        uint64_t hash = reinterpret_cast<uintptr_t>(&fields);
        for (const int32_t value : key) {
            hash = (hash ^ static_cast<uint32_t>(value)) * 0x9E3779B97F4A7C15U;
            hash ^= hash >> 32U;
        }
        return hash;
    }

    // Where the key is, or where it belongs: there is always room.
    [[nodiscard]] std::size_t place_of(const Key& key) const
    {
        std::size_t place = hash(key) & mask_;
        while (places_[place] != kNoKey && keys_[places_[place]] != key) {
            place = (place + 1) & mask_;
        }
        return place;
    }

    std::vector<uint32_t> places_;  // number of a key by hash
    std::size_t mask_;
    std::vector<Key> keys_;  // by number
};

}  // namespace nimba
