#include <filesystem>

#include <gtest/gtest.h>

#include "platform/linux/toolkit.h"
#include "tests/unit/platform/temporary_folder.h"

// What the kernel tells of the graphics, in a folder that stands for the machine.

namespace platform {
namespace {

constexpr const char* kFeaturesWithout3D = "0110000000000000000000000000110010000000000000000000000000000000";
constexpr const char* kFeaturesWith3D = "1110000000000000000000000000110010000000000000000000000000000000";

class HasGpuTest : public testing::Test {
 protected:
  // A device node, and its device with a driver.
  void add(const std::string& node, const std::string& driver, const std::string& features = "") {
    addNode(node);
    addDevice(node + "/device", driver, features);
  }
  void addDevice(const std::filesystem::path& name, const std::string& driver, const std::string& features) {
    const auto device = root / "sys/class/drm" / name;
    std::filesystem::create_directories(device);
    std::filesystem::create_directory_symlink("/sys/bus/drivers/" + driver, device / "driver");
    if (!features.empty()) {
      writeFile(device / "features", features + "\n");
    }
  }
  void addNode(const std::string& node) {
    std::filesystem::create_directories(root / "dev/dri");
    writeFile(root / "dev/dri" / node, "");
  }

  TemporaryFolder folder;
  const std::filesystem::path root = folder.path();
};

TEST_F(HasGpuTest, AMachineWithoutGraphicsHasNone) {
  EXPECT_FALSE(hasGpu(root));
}

TEST_F(HasGpuTest, AScreenAloneIsNone) {
  add("card0", "simple-framebuffer");
  EXPECT_FALSE(hasGpu(root));
}

TEST_F(HasGpuTest, ARenderNodeIsOne) {
  add("card0", "i915");
  add("renderD128", "i915");
  EXPECT_TRUE(hasGpu(root));
}

TEST_F(HasGpuTest, ARenderNodeOfWhichNothingIsToldIsOne) {
  addNode("renderD128");
  EXPECT_TRUE(hasGpu(root));
}

TEST_F(HasGpuTest, AVirtualMachinesPictureMemoryIsNone) {
  add("card0", "virtio_gpu", kFeaturesWithout3D);
  add("renderD128", "virtio_gpu", kFeaturesWithout3D);
  EXPECT_FALSE(hasGpu(root));
}

TEST_F(HasGpuTest, AVirtualMachinesPictureMemoryBelowItsBusIsNone) {
  add("renderD128", "virtio-pci");
  addDevice("renderD128/device/virtio0", "virtio_gpu", kFeaturesWithout3D);
  EXPECT_FALSE(hasGpu(root));
}

TEST_F(HasGpuTest, AVirtualMachinesGpuBelowItsBusIsOneWith3D) {
  add("renderD128", "virtio-pci");
  addDevice("renderD128/device/virtio0", "virtio_gpu", kFeaturesWith3D);
  EXPECT_TRUE(hasGpu(root));
}

TEST_F(HasGpuTest, AVirtualMachinesGpuThatIsLent3DIsOne) {
  add("renderD128", "virtio_gpu", kFeaturesWith3D);
  EXPECT_TRUE(hasGpu(root));
}

TEST_F(HasGpuTest, AVirtualMachinesGpuThatDoesNotTellItsFeaturesIsOne) {
  add("renderD128", "virtio_gpu");
  EXPECT_TRUE(hasGpu(root));
}

TEST_F(HasGpuTest, OneOfSeveralIsEnough) {
  add("renderD128", "virtio_gpu", "0");
  add("renderD129", "amdgpu");
  EXPECT_TRUE(hasGpu(root));
}

}  // namespace
}  // namespace platform
