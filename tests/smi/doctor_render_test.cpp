// SPDX-License-Identifier: MIT
#include "tools/smi/doctor/render.hpp"

#include <gtest/gtest.h>

namespace nimba::smi {
namespace {

const Check kFailure = failed("pci_devices", ExitStatus::kNoAdapter, "none\x1b there", "seat it");

std::vector<Section> one_of_each()
{
    return {{CheckGroup::kMachine, std::nullopt, {passed("ps", "/bin/ps"), kFailure}},
            {CheckGroup::kAdapter,
             SlotIdentity{0, "0000:01:00.0", "Gpu0:Nimba-K1"},
             {noted("hwmon", "no fans", "see dmesg"), skipped("driver", kFailure)}}};
}

TEST(DoctorText, HasALineForEachCheckAndOneForEachRemedy)
{
    EXPECT_EQ(doctor_text(one_of_each(), false),
              "machine\n"
              "  ok    ps           /bin/ps\n"
              "  FAIL  pci_devices  none\\x1b there\n"
              "                     seat it\n"
              "adapter 0000:01:00.0 (Gpu0:Nimba-K1)\n"
              "  note  hwmon        no fans\n"
              "                     see dmesg\n"
              "  -     driver       skipped because of pci_devices\n"
              "1 check failed: mend it, and run nimba-smi doctor again\n");
}

TEST(DoctorText, ColoursTheResultsAlone)
{
    const std::vector<Section> sections{
        {CheckGroup::kUser, std::nullopt, {passed("home", "/root"), kFailure}}};
    EXPECT_EQ(doctor_text(sections, true),
              "user\n"
              "  \x1b[32mok  \x1b[0m  home         /root\n"
              "  \x1b[31mFAIL\x1b[0m  pci_devices  none\\x1b there\n"
              "                     seat it\n"
              "1 check failed: mend it, and run nimba-smi doctor again\n");
}

TEST(DoctorSummary, TellsHowManyFailed)
{
    std::vector<Section> sections{{CheckGroup::kLibrary, std::nullopt, {passed("library", "")}}};
    EXPECT_EQ(summary_line(sections), "all that matters works");
    sections[0].checks.push_back(noted("ps", "", ""));
    EXPECT_EQ(summary_line(sections), "all that matters works; 1 note says what is missing");
    sections[0].checks.push_back(noted("dmidecode", "", ""));
    EXPECT_EQ(summary_line(sections), "all that matters works; 2 notes say what is missing");
    sections[0].checks.insert(sections[0].checks.end(), {kFailure, kFailure});
    EXPECT_EQ(summary_line(sections),
              "2 checks failed: mend the first first, and run nimba-smi doctor again");
}

TEST(DoctorJson, HasTheChecksInOneListAndTheFailuresAsErrors)
{
    Check unlisted = kFailure;
    unlisted.adapter = "0000:02:00.0";
    const std::vector<Section> sections{{CheckGroup::kAdapter,
                                         SlotIdentity{0, "0000:01:00.0", "Gpu0:Nimba-K1"},
                                         {passed("hwmon", "/h")}},
                                        {CheckGroup::kLibrary, std::nullopt, {unlisted}}};
    EXPECT_EQ(doctor_json(sections), R"({
  "schema": "nimba-smi.doctor.1",
  "checks": [
    {
      "id": "hwmon",
      "group": "adapter",
      "adapter": "0000:01:00.0",
      "result": "ok",
      "found": "/h",
      "remedy": null
    },
    {
      "id": "pci_devices",
      "group": "library",
      "adapter": "0000:02:00.0",
      "result": "fail",
      "found": "none\u001b there",
      "remedy": "seat it"
    }
  ],
  "summary": "1 check failed: mend it, and run nimba-smi doctor again",
  "errors": [
    {
      "status": 3,
      "adapter": "0000:02:00.0",
      "call": null,
      "message": "pci_devices: none\u001b there"
    }
  ]
}
)");
}

TEST(SkippedCheck, NamesWhatFailedAtFirst)
{
    const Check second = skipped("drm_devices", kFailure);
    EXPECT_EQ(skipped("drm_access", second).found, "because of pci_devices");
}

}  // namespace
}  // namespace nimba::smi
