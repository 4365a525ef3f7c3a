// SPDX-License-Identifier: MIT
#include "driver/allocations.hpp"

#include "driver/address_space.hpp"
#include "handle_name.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <set>

namespace nimba::sim {
namespace {

constexpr int64_t kPage = 4096;

// Handles that allocations of the machine file have, or show.
std::set<int64_t> fixed_handles(const VideoMemory& description)
{
    std::set<int64_t> handles;
    for (const Allocation& allocation : description.allocations) {
        handles.insert(shown_handle(allocation.values[AllocationKey::kHandle]).value_or(0));
    }
    return handles;
}

uint64_t first_entry(const VideoMemory& description)
{
    int64_t greatest = 0;
    for (const Allocation& allocation : description.allocations) {
        greatest = std::max(greatest, allocation.entry);
    }
    return static_cast<uint64_t>(greatest) + 1;
}

// How many events fall into a tick, so that after each second it is `per_second` of them.
uint64_t due(uint64_t per_second, uint64_t tick)
{
    return per_second * tick / Allocations::kTicksPerSecond -
           per_second * (tick - 1) / Allocations::kTicksPerSecond;
}

}  // namespace

Allocations::Draw::Draw(const AllocationSource& source, const std::vector<AllocationShape>& shapes)
    : source_{&source}, shapes_{&shapes}, random_{source.seed}
{
    uint64_t sum = 0;
    for (const std::size_t shape : source.shapes) {
        sum += shapes[shape].weight;
        weight_sums_.push_back(sum);
    }
}

Allocations::Live Allocations::Draw::next()
{
    const auto shape = std::ranges::upper_bound(weight_sums_, random_() % weight_sums_.back()) -
                       weight_sums_.begin();
    const int64_t device = source_->devices[random_() % source_->devices.size()];
    const int64_t segment = source_->segments[random_() % source_->segments.size()];
    return {&(*shapes_)[source_->shapes[static_cast<std::size_t>(shape)]], 0, device, segment, 0};
}

Allocations::Allocations(const VideoMemory& description, bool va_driver)
    : description_{&description},
      va_driver_{va_driver},
      handles_{fixed_handles(description)},
      changes_{description.change.source, description.shapes},
      choice_{~description.change.source.seed},
      next_entry_{first_entry(description)}
{
    for (const Allocation& allocation : description.allocations) {
        count({&allocation.values, {}}, true);
    }
    for (const AllocationLeak& leak : description.leaks) {
        leaks_.emplace_back(leak.source, description.shapes);
    }
    Draw generated{description.generated.source, description.shapes};
    for (uint64_t count = 0; count < description.generated.count; ++count) {
        mortal_.push_back(add(generated));
    }
}

uint64_t Allocations::add(Draw& draw)
{
    Live allocation = draw.next();
    allocation.handle = handles_.take();
    allocation.address = next_address_;
    const int64_t size = allocation.shape->values.number(AllocationKey::kSize);
    next_address_ += (size / kPage + 1) * kPage;
    if (next_address_ >= kAddressEnd) {
        next_address_ = kFirstAddress;
    }
    live_.emplace_hint(live_.end(), next_entry_, allocation);
    count(view(allocation), true);
    by_handle_.emplace(allocation.handle, next_entry_);
    by_device_[allocation.device].insert(next_entry_);
    return next_entry_++;
}

void Allocations::count(const AllocationView& allocation, bool comes)
{
    const NodeValue segment =
        value_of(*allocation.values, AllocationKey::kSegmentid, allocation.own);
    if (const auto* number = std::get_if<int64_t>(&segment)) {
        const auto size = static_cast<uint64_t>(allocation.values->number(AllocationKey::kSize));
        uint64_t& used = used_[*number];
        used = comes ? used + size : used - size;
    }
}

void Allocations::remove_any()
{
    uint64_t& chosen = mortal_[choice_() % mortal_.size()];
    const auto allocation = live_.find(chosen);
    handles_.give_back(allocation->second.handle);
    by_handle_.erase(allocation->second.handle);
    by_device_.at(allocation->second.device).erase(chosen);
    count(view(allocation->second), false);
    live_.erase(allocation);
    chosen = mortal_.back();
    mortal_.pop_back();
}

void Allocations::tick()
{
    ++ticks_;
    const AllocationChange& change = description_->change;
    for (uint64_t left = due(change.vanish, ticks_); left > 0 && !mortal_.empty(); --left) {
        remove_any();
    }
    for (uint64_t left = due(change.appear, ticks_); left > 0 && mortal_.size() < change.live;
         --left) {
        mortal_.push_back(add(changes_));
    }
    for (std::size_t index = 0; index < leaks_.size(); ++index) {
        for (uint64_t left = due(description_->leaks[index].per_second, ticks_); left > 0; --left) {
            add(leaks_[index]);
        }
    }
}

void Allocations::advance_to(uint64_t ticks)
{
    while (ticks_ < ticks) {
        tick();
    }
}

std::vector<std::string> Allocations::list(AllocationNames names) const
{
    std::vector<std::string> list;
    list.reserve(live_.size());
    for (const auto& [entry, allocation] : live_) {
        list.push_back(names == AllocationNames::kEntries ? fmt::format_int{entry}.str()
                                                          : fmt::format("{:x}", allocation.handle));
    }
    return list;
}

AllocationView Allocations::view(const Live& live)
{
    return {&live.shape->values, {live.handle, live.device, live.segment, live.address}};
}

std::optional<AllocationView> Allocations::find(const std::string& name,
                                                AllocationNames names) const
{
    const bool by_entry = names == AllocationNames::kEntries;
    uint64_t number = 0;
    const char* const name_end = name.data() + name.size();
    const auto [end, error] = std::from_chars(name.data(), name_end, number, by_entry ? 10 : 16);
    if (error != std::errc{} || end != name_end || name.front() == '0' ||
        std::ranges::any_of(name, [](char letter) { return letter >= 'A' && letter <= 'F'; })) {
        return std::nullopt;
    }
    if (!by_entry) {
        const auto entry = by_handle_.find(static_cast<int64_t>(number));
        if (entry == by_handle_.end()) {
            return std::nullopt;
        }
        number = entry->second;
    }
    const auto allocation = live_.find(number);
    return allocation == live_.end() ? std::nullopt : std::optional{view(allocation->second)};
}

std::optional<std::string> Allocations::info(const std::string& name, AllocationNames names) const
{
    const auto found = find(name, names);
    return found ? std::optional{allocation_text(*found->values, found->own, va_driver_)}
                 : std::nullopt;
}

}  // namespace nimba::sim
