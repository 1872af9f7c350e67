// Stands between the program and the services of its platform and of the file system library, put there by
// the linker (--wrap): exactly one of all the calls that go through here fails. So a run tells what the
// migration's own rules make of one failed service, whatever the reason of the failure.
//
// The environment variable FAILING_CALL names the call, from 1; 0 lets all of them pass. What they were about
// stands in "/tmp/service-calls" after the run: a line for a call, its files and folders apart by tabs.
#include <sys/types.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <initializer_list>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

#include "base/atomic_file.h"
#include "lab/sweeps/service_symbols.h"
#include "legacy/interface_mac.h"
#include "platform/boot_environment.h"
#include "platform/cipher.h"
#include "platform/json_util.h"
#include "platform/sdk_utils.h"
#include "platform/section_files.h"

#define REAL(symbol) __asm__("__real_" symbol)
#define WRAPPED(symbol) __asm__("__wrap_" symbol)

namespace {

namespace fs = std::filesystem;
using KELP::Wifi::Updater::UpdateContext;
using KELP::Wifi::Util::RadioFrequency;

constexpr const char* kInformationStore = "/usr/kelp/etc/info.conf";
constexpr const char* kKeyFile = "/usr/kelp/etc/secret.key";
constexpr const char* kKernelEntries = "/proc/sys/kernel/kelp_mac_address";  // and a number
constexpr const char* kBootEnvironment = "";  // several files, which the library behind it knows

class Countdown {
 public:
  Countdown() {
    const char* const call = std::getenv("FAILING_CALL");
    failing_ = call == nullptr ? 0 : std::strtol(call, nullptr, 10);
  }
  Countdown(const Countdown&) = delete;
  Countdown& operator=(const Countdown&) = delete;
  ~Countdown() {
    if (std::FILE* const file = std::fopen("/tmp/service-calls", "w")) {
      std::fputs(places_.c_str(), file);
      std::fclose(file);
    }
  }
  bool IsOver(std::initializer_list<std::string_view> places) {
    const char* separator = "";
    for (std::string_view place : places) {
      if (place.ends_with('/')) place.remove_suffix(1);
      places_.append(separator).append(place);
      separator = "\t";
    }
    places_ += '\n';
    return ++calls_ == failing_;
  }

 private:
  std::string places_;
  long calls_ = 0;
  long failing_ = 0;
};

bool Fails(std::initializer_list<std::string_view> places) {
  static Countdown countdown;
  return countdown.IsOver(places);
}

std::string FolderOf(const std::string& path) {
  return path.substr(0, path.rfind('/'));
}

std::system_error Unreadable(const std::string& path) {
  return {EIO, std::generic_category(), "cannot read " + path};
}

fs::filesystem_error Refused(const char* action, const fs::path& path) {
  return {action, path, std::make_error_code(std::errc::io_error)};
}

}  // namespace

std::string RealFileGetKeyValue(const std::string& path, std::string_view key)
    REAL(SYMBOL_OF_FILE_GET_KEY_VALUE);
std::string WrapFileGetKeyValue(const std::string& path, std::string_view key)
    WRAPPED(SYMBOL_OF_FILE_GET_KEY_VALUE);
std::string WrapFileGetKeyValue(const std::string& path, std::string_view key) {
  if (Fails({path})) throw Unreadable(path);
  return RealFileGetKeyValue(path, key);
}

std::string RealInfoGetKeyValue(std::string_view key) REAL(SYMBOL_OF_INFO_GET_KEY_VALUE);
std::string WrapInfoGetKeyValue(std::string_view key) WRAPPED(SYMBOL_OF_INFO_GET_KEY_VALUE);
std::string WrapInfoGetKeyValue(std::string_view key) {
  if (Fails({kInformationStore})) throw Unreadable(kInformationStore);
  return RealInfoGetKeyValue(key);
}

Json::Value RealLoadJsonFromFile(const std::string& path) REAL(SYMBOL_OF_LOAD_JSON_FROM_FILE);
Json::Value WrapLoadJsonFromFile(const std::string& path) WRAPPED(SYMBOL_OF_LOAD_JSON_FROM_FILE);
Json::Value WrapLoadJsonFromFile(const std::string& path) {
  if (Fails({path})) throw Unreadable(path);
  return RealLoadJsonFromFile(path);
}

// A document that cannot be saved is not there at all.
void RealSaveJsonToFile(const std::string& path, const Json::Value& document)
    REAL(SYMBOL_OF_SAVE_JSON_TO_FILE);
void WrapSaveJsonToFile(const std::string& path, const Json::Value& document)
    WRAPPED(SYMBOL_OF_SAVE_JSON_TO_FILE);
void WrapSaveJsonToFile(const std::string& path, const Json::Value& document) {
  if (Fails({path})) throw std::system_error(EIO, std::generic_category(), "cannot write " + path);
  RealSaveJsonToFile(path, document);
}

void RealFlushDirectory(const std::string& path) REAL(SYMBOL_OF_FLUSH_DIRECTORY);
void WrapFlushDirectory(const std::string& path) WRAPPED(SYMBOL_OF_FLUSH_DIRECTORY);
void WrapFlushDirectory(const std::string& path) {
  if (Fails({path})) throw std::system_error(EIO, std::generic_category(), "cannot flush " + path);
  RealFlushDirectory(path);
}

std::string RealAccessPointFilePath(const UpdateContext& context, RadioFrequency radio)
    REAL(SYMBOL_OF_GET_ACCESS_POINT_FILE_PATH);
std::string WrapAccessPointFilePath(const UpdateContext& context, RadioFrequency radio)
    WRAPPED(SYMBOL_OF_GET_ACCESS_POINT_FILE_PATH);
std::string WrapAccessPointFilePath(const UpdateContext& context, RadioFrequency radio) {
  // The settings of all bands are found without a kernel entry.
  if (radio != RadioFrequency::AllBands && Fails({kKernelEntries})) {
    throw std::runtime_error("Failed to get bssid from kelp_mac_address");
  }
  return RealAccessPointFilePath(context, radio);
}

int RealFileEnumSection(const char* path, KLIBCSzList** list) REAL(SYMBOL_OF_FILE_ENUM_SECTION);
int WrapFileEnumSection(const char* path, KLIBCSzList** list) WRAPPED(SYMBOL_OF_FILE_ENUM_SECTION);
int WrapFileEnumSection(const char* path, KLIBCSzList** list) {
  return Fails({path}) ? -1 : RealFileEnumSection(path, list);
}

int RealFileGetSection(const char* path, const char* name, KLIBCSzHash** table)
    REAL(SYMBOL_OF_FILE_GET_SECTION);
int WrapFileGetSection(const char* path, const char* name, KLIBCSzHash** table)
    WRAPPED(SYMBOL_OF_FILE_GET_SECTION);
int WrapFileGetSection(const char* path, const char* name, KLIBCSzHash** table) {
  return Fails({path}) ? -1 : RealFileGetSection(path, name, table);
}

int RealDecrypt(const char* stored, char* buffer, std::size_t capacity) REAL(SYMBOL_OF_DECRYPT);
int WrapDecrypt(const char* stored, char* buffer, std::size_t capacity) WRAPPED(SYMBOL_OF_DECRYPT);
int WrapDecrypt(const char* stored, char* buffer, std::size_t capacity) {
  return Fails({kKeyFile}) ? 0 : RealDecrypt(stored, buffer, capacity);
}

int RealUSB3Disable() REAL(SYMBOL_OF_USB3_DISABLE);
int WrapUSB3Disable() WRAPPED(SYMBOL_OF_USB3_DISABLE);
int WrapUSB3Disable() {
  return Fails({kBootEnvironment}) ? -1 : RealUSB3Disable();
}

fs::file_status RealStatus(const fs::path& path) REAL(SYMBOL_OF_STATUS);
fs::file_status WrapStatus(const fs::path& path) WRAPPED(SYMBOL_OF_STATUS);
fs::file_status WrapStatus(const fs::path& path) {
  if (Fails({path.native()})) throw Refused("status", path);
  if (Fails({path.native()})) return fs::file_status(fs::file_type::not_found);
  return RealStatus(path);
}

bool RealCreateDirectories(const fs::path& path) REAL(SYMBOL_OF_CREATE_DIRECTORIES);
bool WrapCreateDirectories(const fs::path& path) WRAPPED(SYMBOL_OF_CREATE_DIRECTORIES);
bool WrapCreateDirectories(const fs::path& path) {
  const std::string folder(path.native(), 0, path.native().find_last_not_of('/') + 1);
  if (Fails({folder, FolderOf(folder)})) throw Refused("cannot create directories", path);
  return RealCreateDirectories(path);
}

int RealMkdir(const char* path, mode_t mode) REAL(SYMBOL_OF_MKDIR);
int WrapMkdir(const char* path, mode_t mode) WRAPPED(SYMBOL_OF_MKDIR);
int WrapMkdir(const char* path, mode_t mode) {
  if (!Fails({path})) return RealMkdir(path, mode);
  errno = EIO;
  return -1;
}

void RealRename(const fs::path& from, const fs::path& to) REAL(SYMBOL_OF_RENAME);
void WrapRename(const fs::path& from, const fs::path& to) WRAPPED(SYMBOL_OF_RENAME);
void WrapRename(const fs::path& from, const fs::path& to) {
  if (Fails({from.native()})) throw Refused("cannot rename", from);
  RealRename(from, to);
}

bool RealRemove(const fs::path& path) REAL(SYMBOL_OF_REMOVE);
bool WrapRemove(const fs::path& path) WRAPPED(SYMBOL_OF_REMOVE);
bool WrapRemove(const fs::path& path) {
  if (Fails({path.native()})) throw Refused("cannot remove", path);
  return RealRemove(path);
}
