#include "tests/end_to_end/edits.h"

#include "tests/end_to_end/updater_run.h"

namespace end_to_end {
namespace {

void MakeWay(lab::PrivateRoot& device, const std::string& path) {
  if (device.Exists(path)) device.Remove(path);
}

}  // namespace

Edit File(const std::string& path, const std::string& text) {
  return [=](lab::PrivateRoot& device) {
    MakeWay(device, path);
    device.Write(path, text);
  };
}

Edit Folder(const std::string& path) {
  return [=](lab::PrivateRoot& device) {
    MakeWay(device, path);
    device.MakeDirectory(path);
  };
}

Edit Fifo(const std::string& path) {
  return [=](lab::PrivateRoot& device) {
    MakeWay(device, path);
    device.MakeFifo(path);
  };
}

Edit Link(const std::string& path, const std::string& target) {
  return [=](lab::PrivateRoot& device) {
    MakeWay(device, path);
    device.Link(path, target);
  };
}

Edit Loop(const std::string& path) {
  return Link(path, path);
}

Edit Gone(const std::string& path) {
  return [=](lab::PrivateRoot& device) { device.Remove(path); };
}

Edit Mode(const std::string& path, mode_t mode) {
  return [=](lab::PrivateRoot& device) { device.SetMode(path, mode); };
}

Edit Fact(const std::string& key, const std::string& value) {
  return [=](lab::PrivateRoot& device) { SetInformation(device, key, value); };
}

Edit NoFact(const std::string& key) {
  return [=](lab::PrivateRoot& device) { DropKey(device, kInformation, key); };
}

lab::PrivateRoot Edited(std::string_view name, const Edits& edits) {
  lab::PrivateRoot device(Image(name));
  for (const Edit& edit : edits) edit(device);
  return device;
}

}  // namespace end_to_end
