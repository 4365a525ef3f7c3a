// SPDX-License-Identifier: MIT
#include "stub_discovery_fixture.hpp"

#include <fcntl.h>

#include <ostream>
#include <utility>

namespace nimba::test {
namespace {

enum class Node { Absent, Broken, Opens };

struct Choice {
    Node render;
    Node control;
    Node primary;
    const char* used;  // null: the device is skipped
};

void PrintTo(const Choice& choice, std::ostream* out)
{
    const auto word = [](Node node) {
        return node == Node::Absent ? "Absent" : node == Node::Broken ? "Broken" : "Opens";
    };
    *out << "Render" << word(choice.render) << "Control" << word(choice.control) << "Primary"
         << word(choice.primary);
}

constexpr Choice kChoices[] = {
    {Node::Opens, Node::Opens, Node::Opens, "renderD199"},
    {Node::Opens, Node::Absent, Node::Absent, "renderD199"},
    {Node::Opens, Node::Broken, Node::Broken, "renderD199"},
    {Node::Broken, Node::Opens, Node::Opens, "controlD135"},
    {Node::Absent, Node::Opens, Node::Opens, "controlD135"},
    {Node::Absent, Node::Opens, Node::Absent, "controlD135"},
    {Node::Broken, Node::Broken, Node::Opens, "card71"},
    {Node::Broken, Node::Absent, Node::Opens, "card71"},
    {Node::Absent, Node::Broken, Node::Opens, "card71"},
    {Node::Absent, Node::Absent, Node::Opens, "card71"},
    {Node::Broken, Node::Broken, Node::Broken, nullptr},
    {Node::Absent, Node::Absent, Node::Broken, nullptr},
    {Node::Absent, Node::Absent, Node::Absent, nullptr},
};

class NodeChoice : public StubDiscoveryTest, public testing::WithParamInterface<Choice> {
  protected:
    // A node that is not available would open: only the device says that it must not be used.
    void plug(std::uint16_t vendor, std::uint16_t device)
    {
        const auto path = [&](Node node, const char* name) {
            return node == Node::Broken ? devices_.missing_node(name) : devices_.node(name);
        };
        const Choice& choice = GetParam();
        drmDevice& plugged =
            devices_.plug(vendor, device, {0x9a01, 1, 0, 0},
                          {path(choice.primary, "card71"), path(choice.control, "controlD135"),
                           path(choice.render, "renderD199")});
        for (const auto& [node, type] : {std::pair{choice.primary, DRM_NODE_PRIMARY},
                                         std::pair{choice.control, DRM_NODE_CONTROL},
                                         std::pair{choice.render, DRM_NODE_RENDER}}) {
            if (node == Node::Absent) {
                plugged.available_nodes &= ~(1 << type);
            }
        }
    }
};

TEST_P(NodeChoice, OpensAnAdapterThroughTheFirstOfRenderControlAndPrimaryThatOpens)
{
    plug(NIMBA_VENDOR_ID, DEVICE_ID_NIMBA_K5);
    discover_with();
    EXPECT_EQ(control_enable(), 1);
    if (GetParam().used == nullptr) {
        EXPECT_EQ(record_.header.chip_num, 0);
        EXPECT_EQ(stub_->asked_versions, 0);
        EXPECT_EQ(messages_, Texts{"find chip num:0, other vendor chip num:0\n"});
        EXPECT_EQ(opened_, OpenFiles{});
        return;
    }
    EXPECT_EQ(record_.header.chip_num, 1);
    const int fd = record_.header.drm_fd[0];
    EXPECT_EQ(opened_, (OpenFiles{{fd, devices_.missing_node(GetParam().used)}}));
    EXPECT_EQ(::fcntl(fd, F_GETFL) & O_ACCMODE, O_RDWR);
    EXPECT_TRUE(closes_on_exec(fd));
    EXPECT_EQ(stub_->asked_versions, 1);
    EXPECT_EQ(stub_->live_versions, 0);
}

TEST_P(NodeChoice, OpensAnotherVendorsGpuInTheSameOrder)
{
    plug(0x8086, 0x56a0);
    discover_with();
    EXPECT_EQ(control_enable(), 1);
    if (GetParam().used == nullptr) {
        EXPECT_EQ(cache().other_vendor_chip_num, 0);
        EXPECT_EQ(stub_->asked_versions, 0);
        EXPECT_EQ(messages_, Texts{"find chip num:0, other vendor chip num:0\n"});
        EXPECT_EQ(opened_, OpenFiles{});
        return;
    }
    EXPECT_EQ(cache().other_vendor_chip_num, 1);
    ASSERT_EQ(opened_.size(), 1U);
    const auto& [fd, file] = *opened_.begin();
    EXPECT_EQ(file, devices_.missing_node(GetParam().used));
    EXPECT_EQ(::fcntl(fd, F_GETFL) & O_ACCMODE, O_RDWR);
    EXPECT_TRUE(closes_on_exec(fd));
    EXPECT_EQ(stub_->asked_versions, 1);
    EXPECT_EQ(stub_->live_versions, 0);
}

INSTANTIATE_TEST_SUITE_P(, NodeChoice, testing::ValuesIn(kChoices),
                         [](const testing::TestParamInfo<Choice>& row) {
                             return testing::PrintToString(row.param);
                         });

TEST_F(StubDiscoveryTest, TakesTheCardNumberFromThePrimaryNodeThoughAnotherNodeIsUsed)
{
    devices_.plug(QV_VENDOR_ID, DEVICE_ID_QV_M40, {0x9a01, 1, 0, 0},
                  {"/dev/dri/card93", "", devices_.node("renderD128")});
    discover_with();
    EXPECT_EQ(record_.header.drm_card_idx[0], 93);
    EXPECT_EQ(opened_,
              (OpenFiles{{record_.header.drm_fd[0], devices_.missing_node("renderD128")}}));
}

TEST_F(StubDiscoveryTest, DoesNotTryTheNextNodeWhenTheOpenedOneHasNoVersion)
{
    devices_.plug(QV_VENDOR_ID, DEVICE_ID_QV_M40, {0x9a01, 1, 0, 0},
                  {devices_.node("card71"), "", devices_.node("renderD199")});
    use_stub();
    const std::string mute = devices_.missing_node("renderD199");
    stub_->mute_nodes[0] = mute.c_str();
    discover();
    EXPECT_EQ(record_.header.chip_num, 0);
    EXPECT_EQ(stub_->asked_versions, 1);
    EXPECT_EQ(opened_, OpenFiles{});
}

}  // namespace
}  // namespace nimba::test
