// SPDX-License-Identifier: MIT
#include "tools/smi/list/render.hpp"

#include <gtest/gtest.h>

namespace nimba::smi {
namespace {

// The longest values that each column can get.
const Adapter kWidest{2,      "Gpu2:Nimba-GT-K3tXX", "ffff:ff:1f.7",    1048, 0x5156,
                      0xFFFF, DriverKind::kUnknown,  {0xFFFF, 0xFF1F07}};

TEST(ListText, IsEmptyWhenNothingWasFound)
{
    EXPECT_EQ(list_text({}), "");
}

TEST(ListText, HasARowForEachAdapterAndTheForeignGpu)
{
    ListSnapshot snapshot;
    snapshot.adapters = {
        {0, "Gpu0:Nimba-K1", "0000:03:00.0", 0, 0x4E4D, 0x1001, DriverKind::kVa, {0, 0x30000}},
        {1,
         std::nullopt,
         "0000:04:00.0",
         std::nullopt,
         0x5156,
         std::nullopt,
         DriverKind::kLegacy,
         {0, 0x40000}}};
    snapshot.foreign_gpu =
        ForeignGpu{"Gpu2:Nvidia-GPU", "0000:01:00.0", 2, 0x10DE, 0x2684, {0, 0x10000}};
    EXPECT_EQ(list_text(snapshot),
              "SLOT  NAME             BUS ID        CARD  DEVICE  DRIVER  LUID\n"
              "0     Gpu0:Nimba-K1    0000:03:00.0  0     0x1001  va      0x0:0x30000\n"
              "1     -                0000:04:00.0  -     -       legacy  0x0:0x40000\n"
              "-     Gpu2:Nvidia-GPU  0000:01:00.0  2     0x2684  -       0x0:0x10000\n");
}

TEST(ListText, FitsEightyColumnsAtItsWidest)
{
    ListSnapshot snapshot;
    snapshot.adapters = {kWidest};
    EXPECT_EQ(list_text(snapshot),
              "SLOT  NAME                 BUS ID        CARD  DEVICE  DRIVER   LUID\n"
              "2     Gpu2:Nimba-GT-K3tXX  ffff:ff:1f.7  1048  0xffff  unknown  "
              "0xffff:0xff1f07\n");
    EXPECT_EQ(std::string{"2     Gpu2:Nimba-GT-K3tXX  ffff:ff:1f.7  1048  0xffff  unknown  "
                          "0xffff:0xff1f07"}
                  .size(),
              79U);
}

TEST(ListCsv, HasALineForEachAdapterAndTheForeignGpu)
{
    ListSnapshot snapshot;
    EXPECT_EQ(list_csv(snapshot),
              "slot,name,bus_id,card,vendor_id,device_id,driver,luid_low,luid_high\n");
    snapshot.adapters = {
        {0, "Gpu0:Nimba-K1", "0000:03:00.0", 0, 0x4E4D, 0x1001, DriverKind::kVa, {1, 0x30000}},
        {1,
         std::nullopt,
         "0000:04:00.0",
         std::nullopt,
         0x5156,
         std::nullopt,
         DriverKind::kUnknown,
         {0, 0x40000}}};
    snapshot.foreign_gpu =
        ForeignGpu{"Gpu2:Nvidia-GPU", "0000:01:00.0", 2, 0x10DE, 0x2684, {0, 0x10000}};
    EXPECT_EQ(list_csv(snapshot),
              "slot,name,bus_id,card,vendor_id,device_id,driver,luid_low,luid_high\n"
              "0,Gpu0:Nimba-K1,0000:03:00.0,0,0x4e4d,0x1001,va,1,196608\n"
              "1,,0000:04:00.0,,0x5156,,unknown,0,262144\n"
              ",Gpu2:Nvidia-GPU,0000:01:00.0,2,0x10de,0x2684,,0,65536\n");
}

TEST(ListJson, IsADocumentAlsoWhenNothingWasFound)
{
    EXPECT_EQ(list_json({}),
              "{\n"
              "  \"schema\": \"nimba-smi.list.1\",\n"
              "  \"adapters\": [],\n"
              "  \"foreign_gpu\": null,\n"
              "  \"errors\": []\n"
              "}\n");
}

TEST(ListJson, HasAdaptersForeignGpuAndErrors)
{
    ListSnapshot snapshot;
    snapshot.adapters = {{2,
                          std::nullopt,
                          "0000:05:00.0",
                          std::nullopt,
                          0x4E4D,
                          std::nullopt,
                          DriverKind::kUnknown,
                          {0, 0x50000}}};
    snapshot.foreign_gpu =
        ForeignGpu{"Gpu2:Amd-GPU", "0000:01:00.0", 2, 0x1002, 0x73BF, {0, 0x10000}};
    snapshot.problems = {{ExitStatus::kWorkerLost, "0000:03:00.0", "gfx_find_adapter", "lost"},
                         {ExitStatus::kNoLibdrm, std::nullopt, std::nullopt, "no \"libdrm\""}};
    EXPECT_EQ(list_json(snapshot),
              R"({
  "schema": "nimba-smi.list.1",
  "adapters": [
    {
      "slot": 2,
      "name": null,
      "bus_id": "0000:05:00.0",
      "card": null,
      "vendor_id": "0x4e4d",
      "device_id": null,
      "driver": "unknown",
      "luid": {
        "low": 0,
        "high": 327680
      }
    }
  ],
  "foreign_gpu": {
    "name": "Gpu2:Amd-GPU",
    "bus_id": "0000:01:00.0",
    "card": 2,
    "vendor_id": "0x1002",
    "device_id": "0x73bf",
    "luid": {
      "low": 0,
      "high": 65536
    }
  },
  "errors": [
    {
      "status": 7,
      "adapter": "0000:03:00.0",
      "call": "gfx_find_adapter",
      "message": "lost"
    },
    {
      "status": 5,
      "adapter": null,
      "call": null,
      "message": "no \"libdrm\""
    }
  ]
}
)");
}

}  // namespace
}  // namespace nimba::smi
