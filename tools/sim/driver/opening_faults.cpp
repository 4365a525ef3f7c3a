// SPDX-License-Identifier: MIT
#include "driver/opening_faults.hpp"

#include <random>
#include <vector>

namespace nimba::sim {
namespace {

// The same bytes for the same seed and path, every time. One in eight is a null, one a newline.
std::string garbage(uint64_t seed, const std::string& path, uint64_t length)
{
    std::vector<uint64_t> seeds{seed & 0xFFFFFFFF, seed >> 32};
    for (const char letter : path) {
        seeds.push_back(static_cast<unsigned char>(letter));
    }
    std::seed_seq sequence(seeds.begin(), seeds.end());
    std::mt19937 generator{sequence};
    std::string bytes;
    while (bytes.size() < length) {
        const auto number = generator();
        switch (number >> 29) {
            case 0:
                bytes += '\0';
                break;
            case 1:
                bytes += '\n';
                break;
            default:
                bytes += static_cast<char>(number & 0xFF);
        }
    }
    return bytes;
}

}  // namespace

bool befalls_openings(FaultKind kind, bool directory)
{
    switch (kind) {
        case FaultKind::kOpen:
        case FaultKind::kBlock:
            return true;
        case FaultKind::kRead:
        case FaultKind::kShort:
        case FaultKind::kGarbage:
            return !directory;
        case FaultKind::kList:
            return directory;
        case FaultKind::kWrite:
        case FaultKind::kVanish:
        case FaultKind::kGone:
            break;
    }
    return false;
}

void add_effect(const Fault& fault, const std::string& path, OpeningFaults& faults)
{
    switch (fault.kind) {
        case FaultKind::kOpen:
            faults.open_error = faults.open_error == 0 ? fault.error : faults.open_error;
            break;
        case FaultKind::kRead:
            if (!faults.fails_behind) {
                faults.fails_behind = fault.bytes;
                faults.read_error = fault.error;
            }
            break;
        case FaultKind::kShort:
            faults.longest_read = faults.longest_read.value_or(fault.bytes);
            break;
        case FaultKind::kBlock:
            faults.pause = faults.pause.count() == 0 ? fault.length : faults.pause;
            break;
        case FaultKind::kGarbage:
            if (!faults.garbage) {
                faults.garbage = garbage(fault.seed, path, fault.bytes);
            }
            break;
        case FaultKind::kList:
            if (!faults.listing_fails) {
                faults.listing_fails = true;
                faults.entries = fault.entries;
                faults.list_error = fault.error;
            }
            break;
        case FaultKind::kWrite:
        case FaultKind::kVanish:
        case FaultKind::kGone:
            break;
    }
}

}  // namespace nimba::sim
