// SPDX-License-Identifier: MIT
#include "tools/archive/document.hpp"

#include "tools/archive/archive_error.hpp"
#include "tools/archive/json_pass.hpp"
#include "tools/archive/limits.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace nimba::archive {
namespace {

constexpr std::size_t kDeepest = 32;
constexpr std::size_t kMostMembers = 1000;

struct Form {
    std::string_view name;
    std::string_view schema;
};

constexpr std::array<Form, 7> kForms{{{kOverviewDocument, "nimba-smi.overview.1"},
                                      {"version", "nimba-smi.version.1"},
                                      {"dvfs", "nimba-smi.dvfs.1"},
                                      {"alloc", "nimba-smi.alloc.1"},
                                      {"leaks", "nimba-smi.leaks.1"},
                                      {"pagetable", "nimba-smi.pagetable-map.1"},
                                      {"doctor", "nimba-smi.doctor.1"}}};

const Form* form_of(std::string_view name)
{
    const auto* const found = std::ranges::find(kForms, name, &Form::name);
    return found == kForms.end() ? nullptr : found;
}

// That the whole is an object, with the schema that it tells, and no object is too wide.
class Check final : public JsonPass {
  public:
    Check() : JsonPass{kDeepest, Limits{}.document_values} {}

    [[nodiscard]] const std::string& schema() const { return schema_; }

    bool string(std::string& value)
    {
        if (depth() == 1 && key_ == "schema") {
            schema_ = value;
        }
        return JsonPass::string(value);
    }

    bool key(std::string& key)
    {
        if (depth() == 1) {
            key_ = key;
        }
        return ++members_.back() <= kMostMembers;
    }

    bool start_object(std::size_t members)
    {
        members_.push_back(0);
        return JsonPass::start_object(members);
    }

    bool end_object()
    {
        members_.pop_back();
        return JsonPass::end_object();
    }

  private:
    std::vector<std::size_t> members_;  // of each object that is open
    std::string key_;                   // of the outermost object
    std::string schema_;
};

}  // namespace

bool is_document(std::string_view name)
{
    return name != kOverviewDocument && form_of(name) != nullptr;
}

std::size_t check_document(std::string_view name, const std::string& place, std::string_view text)
{
    Check check;
    const Form* const form = form_of(name);
    if (form == nullptr || !nlohmann::json::sax_parse(text, &check) ||
        check.schema() != form->schema) {
        throw ArchiveError{place + " is no such document"};
    }
    return check.values();
}

}  // namespace nimba::archive
