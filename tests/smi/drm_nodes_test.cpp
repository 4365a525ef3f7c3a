// SPDX-License-Identifier: MIT
#include "tools/smi/worker/drm_nodes.hpp"

#include "ordinary_user.hpp"
#include "support/temp_directory.hpp"

#include <gtest/gtest.h>

#include <filesystem>

namespace nimba::smi {
namespace {

namespace fs = std::filesystem;

TEST(DeniedDevices, NoneWithoutNodes)
{
    EXPECT_EQ(denied_devices({}), std::vector<DeniedFile>{});
}

TEST(DeniedDevices, OneUsableNodeIsEnoughForADevice)
{
    const std::vector<DrmNode> nodes{{"/dev/dri/card0", "a", true, "video"},
                                     {"/dev/dri/renderD128", "a", false, "render"}};
    EXPECT_EQ(denied_devices(nodes), std::vector<DeniedFile>{});
}

TEST(DeniedDevices, RenderNodeIsTheOneToAskFor)
{
    const std::vector<DrmNode> nodes{{"/dev/dri/card0", "a", true, "video"},
                                     {"/dev/dri/card1", "b", true, "video"},
                                     {"/dev/dri/controlD64", "a", true, "video"},
                                     {"/dev/dri/renderD128", "a", true, "render"}};
    EXPECT_EQ(denied_devices(nodes), (std::vector<DeniedFile>{{"/dev/dri/renderD128", "render"},
                                                              {"/dev/dri/card1", "video"}}));
}

TEST(DeniedDevices, OfOtherMakersDoNotCount)
{
    const std::vector<DrmNode> nodes{{"/dev/dri/card0", "a", true, "video", Maker::kOther},
                                     {"/dev/dri/card1", "b", true, "video", Maker::kProduct},
                                     {"/dev/dri/card2", "c", true, "video", Maker::kUnknown}};
    EXPECT_EQ(denied_devices(nodes),
              (std::vector<DeniedFile>{{"/dev/dri/card1", "video"}, {"/dev/dri/card2", "video"}}));
}

TEST(ProductDevices, AreThoseThatCanBeOpened)
{
    const std::vector<DrmNode> nodes{
        {"/dev/dri/card0", "/sys/devices/0000:01:00.0", true, "", Maker::kProduct},
        {"/dev/dri/card1", "/sys/devices/0000:02:00.0", true, "", Maker::kProduct},
        {"/dev/dri/card2", "/sys/devices/0000:03:00.0", false, "", Maker::kOther},
        {"/dev/dri/renderD129", "/sys/devices/0000:02:00.0", false, "", Maker::kProduct}};
    EXPECT_EQ(product_devices(nodes), std::vector<std::string>{"0000:02:00.0"});
    EXPECT_EQ(device_count(nodes), 3);
}

// A directory of nodes and the class directory that tells whose they are.
class DrmNodes : public testing::Test {
  protected:
    DrmNodes()
    {
        fs::permissions(tree_.path(), fs::perms{0755});
        fs::create_directories(tree_.path() / "dri" / "by-path");
        fs::create_directories(tree_.path() / "pci0");
    }

    void add_node(const std::string& name, unsigned mode)
    {
        const std::string path = tree_.write("dri/" + name, "");
        fs::permissions(path, fs::perms{mode});
        fs::create_directories(tree_.path() / "class" / name);
        fs::create_symlink("../../pci0", tree_.path() / "class" / name / "device");
    }

    // The maker of card0 when its device says that it is this vendor's.
    Maker maker_with_vendor(const std::string& text)
    {
        add_node("card0", 0666);
        tree_.write("pci0/vendor", text);
        return nodes().at(0).maker;
    }

    [[nodiscard]] std::string path(const std::string& name) const
    {
        return (tree_.path() / name).string();
    }

    [[nodiscard]] std::vector<DrmNode> nodes() const
    {
        return drm_nodes(path("dri"), path("class"));
    }

  private:
    test::TempDirectory tree_;
};

TEST_F(DrmNodes, ComeSortedWithTheirDevice)
{
    add_node("renderD128", 0666);
    add_node("card0", 0666);
    add_node("controlD64", 0666);
    add_node("mouse0", 0666);
    const auto found = nodes();
    ASSERT_EQ(found.size(), 3U);
    EXPECT_EQ(found[0].path, path("dri/card0"));
    EXPECT_EQ(found[1].path, path("dri/controlD64"));
    EXPECT_EQ(found[2].path, path("dri/renderD128"));
    for (const DrmNode& node : found) {
        EXPECT_EQ(node.device, fs::canonical(path("pci0"))) << node.path;
        EXPECT_FALSE(node.denied) << node.path;
    }
}

TEST_F(DrmNodes, WithoutAClassEntryAreDevicesOfTheirOwn)
{
    add_node("card0", 0666);
    fs::remove_all(path("class"));
    EXPECT_EQ(nodes().at(0).device, "card0");
    EXPECT_EQ(nodes().at(0).maker, Maker::kUnknown);
}

TEST_F(DrmNodes, AreDeniedToThoseWhoMayNotReadAndWriteThem)
{
    add_node("card0", 0600);
    add_node("card1", 0444);
    add_node("card2", 0666);
    fs::permissions(path("dri/card0"), fs::perms{0});
    fs::permissions(path("dri/card1"), fs::perms{0444});
    EXPECT_TRUE(holds_for_ordinary_user([&] {
        const auto found = nodes();
        return found.size() == 3 && found[0].denied && found[1].denied && !found[2].denied;
    }));
}

TEST_F(DrmNodes, OfTheNimbaVendorAreTheProducts)
{
    EXPECT_EQ(maker_with_vendor("0x4e4d\n"), Maker::kProduct);
}

TEST_F(DrmNodes, OfTheQvVendorAreTheProducts)
{
    EXPECT_EQ(maker_with_vendor("0x5156\n"), Maker::kProduct);
}

TEST_F(DrmNodes, OfAnotherVendorAreNot)
{
    EXPECT_EQ(maker_with_vendor("0x10de\n"), Maker::kOther);
}

TEST_F(DrmNodes, OfAVendorThatCannotBeReadMayBe)
{
    EXPECT_EQ(maker_with_vendor("garbage"), Maker::kUnknown);
}

TEST_F(DrmNodes, OfADeviceWithoutAVendorAreNot)
{
    add_node("card0", 0666);
    EXPECT_EQ(nodes().at(0).maker, Maker::kOther);
}

TEST_F(DrmNodes, DirectoryIsDeniedToThoseWhoMayNotLookIntoIt)
{
    EXPECT_EQ(denied_directory(path("dri")), std::nullopt);
    EXPECT_EQ(denied_directory(path("absent")), std::nullopt);
    fs::permissions(path("dri"), fs::perms{0});
    EXPECT_TRUE(holds_for_ordinary_user([&] {
        return denied_directory(path("dri")) == DeniedFile{path("dri"), ""};
    }));
    fs::permissions(path("dri"), fs::perms{0700});
}

TEST_F(DrmNodes, AreNoneWithoutTheDirectory)
{
    EXPECT_TRUE(drm_nodes(path("absent"), path("class")).empty());
}

}  // namespace
}  // namespace nimba::smi
