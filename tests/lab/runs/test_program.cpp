// What the lab's tests run: a program that does what its arguments say.

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <iterator>
#include <map>
#include <string>
#include <vector>

namespace {

using Arguments = std::vector<std::string>;

int Fail(const std::string& what) {
  std::cerr << what << ": " << std::strerror(errno) << '\n';
  return 1;
}

int Say(const Arguments& arguments) {
  std::cout << arguments.at(0) << std::flush;
  std::cerr << arguments.at(1) << std::flush;
  return 0;
}

int SayMuch(const Arguments& arguments) {
  const std::string block(1000, 'o');
  for (int i = 0; i < std::stoi(arguments.at(0)); ++i) {
    std::cout << block;
    std::cerr << block;
    syslog(LOG_ERR, "line %d", i);
  }
  return 0;
}

int Kill(const Arguments& arguments) {
  raise(std::stoi(arguments.at(0)));
  return 0;
}

int Sleep(const Arguments& /*unused*/) {
  while (true) pause();
}

/// Leaves a process behind that holds the output streams open, and prints its number.
int LeaveBehind(const Arguments& /*unused*/) {
  const pid_t child = fork();
  if (child == 0) Sleep({});
  std::cout << child;
  return 0;
}

/// Leaves a process behind that is in no group, no session and no parent's care.
int LeaveDaemon(const Arguments& /*unused*/) {
  if (fork() == 0) {
    setsid();
    if (fork() == 0) Sleep({});
    _exit(0);
  }
  usleep(10'000);
  return 0;
}

/// Prints and logs without end.
int SayForever(const Arguments& /*unused*/) {
  const std::string block(64 * 1024, 'o');
  while (true) {
    static_cast<void>(write(STDOUT_FILENO, block.data(), block.size()) > 0);
    syslog(LOG_ERR, "%s", block.c_str());
  }
}

int Log(const Arguments& arguments) {
  syslog(std::stoi(arguments.at(0)), "%s", arguments.at(1).c_str());
  return 0;
}

int LogLong(const Arguments& arguments) {
  return Log({arguments.at(0), std::string(std::stoul(arguments.at(1)), 'x')});
}

int Read(const Arguments& arguments) {
  std::ifstream file(arguments.at(0));
  if (!file) return Fail(arguments.at(0));
  std::cout << std::string(std::istreambuf_iterator<char>(file), {});
  return 0;
}

int Write(const Arguments& arguments) {
  std::ofstream file(arguments.at(0));
  file << arguments.at(1);
  file.close();
  return file ? 0 : Fail(arguments.at(0));
}

/// Writes until the file system is full.
int Fill(const Arguments& arguments) {
  const int file = open(arguments.at(0).c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
  const std::string block(4096, 'f');
  while (write(file, block.data(), block.size()) > 0) continue;
  return Fail(arguments.at(0));
}

int List(const Arguments& arguments) {
  for (const auto& entry : std::filesystem::directory_iterator(arguments.at(0))) {
    std::cout << entry.path().filename().native() << '\n';
  }
  return 0;
}

int ChangeMode(const Arguments& arguments) {
  const auto mode = static_cast<mode_t>(std::stoul(arguments.at(1), nullptr, 8));
  return chmod(arguments.at(0).c_str(), mode) == 0 ? 0 : Fail(arguments.at(0));
}

int Environment(const Arguments& /*unused*/) {
  for (char** variable = environ; *variable != nullptr; ++variable) std::cout << *variable << '\n';
  return 0;
}

/// What a process has from the one that started it.
int Inheritance(const Arguments& /*unused*/) {
  std::cout << "folder " << std::filesystem::current_path().native() << '\n';
  const mode_t mask = umask(0);
  std::cout << "umask " << std::oct << mask << std::dec << '\n';
  rlimit limit{};
  getrlimit(RLIMIT_NOFILE, &limit);
  std::cout << "files " << limit.rlim_cur << ' ' << limit.rlim_max << '\n';
  for (int descriptor = 0; descriptor < 256; ++descriptor) {
    if (fcntl(descriptor, F_GETFD) >= 0) std::cout << "descriptor " << descriptor << '\n';
  }
  sigset_t blocked;
  sigprocmask(SIG_SETMASK, nullptr, &blocked);
  for (int signal = 1; signal < NSIG; ++signal) {
    struct sigaction action {};
    sigaction(signal, nullptr, &action);
    if (sigismember(&blocked, signal) == 1) std::cout << "blocked " << signal << '\n';
    if (action.sa_handler == SIG_IGN) std::cout << "ignored " << signal << '\n';
  }
  return 0;
}

/// Writes the numbers of the open standard streams to a file.
int OpenStreams(const Arguments& arguments) {
  std::string open_streams;
  for (int descriptor = 0; descriptor < 3; ++descriptor) {
    if (fcntl(descriptor, F_GETFD) >= 0) open_streams += std::to_string(descriptor);
  }
  return Write({arguments.at(0), open_streams});
}

/// Says and logs what a file holds, and fails.
int Tell(const std::string& path) {
  std::ifstream file(path);
  const std::string text(std::istreambuf_iterator<char>(file), {});
  std::cerr << "wrong: " << text;
  syslog(LOG_ERR, "kelpwifiupdater:999 wrong: %s", text.c_str());
  return 1;
}

/// Behaves like an updater.
int Update(const Arguments& arguments) {
  if (arguments.at(0) == "crash") return Kill({std::to_string(SIGSEGV)});
  if (arguments.at(0).starts_with("hang")) return Sleep({});
  if (arguments.at(0) == "wild") return SayForever({});
  if (arguments.at(0) == "tell") return Tell("/usr/kelp/etc/wifi/wifi_wps");
  if (arguments.at(0).starts_with("fork")) {
    while (true) {
      if (fork() == 0) setsid();
      usleep(100'000);
    }
  }
  syslog(LOG_WARNING, "updating from %s", arguments.at(0).c_str());
  if (arguments.at(0) == "wait") return Sleep({});
  if (arguments.at(0) == "much") return SayMuch({"300"});
  if (arguments.at(0) == "bad") {
    std::cerr << "no update from bad\n";
    return 3;
  }
  std::filesystem::rename("/etc/old.conf", "/etc/archive/old.conf");
  std::filesystem::remove("/etc/gone.conf");
  return Write({"/etc/new.json", "{\n\t\"from\" : \"" + arguments.at(0) + "\"\n}\n"});
}

const std::map<std::string, std::function<int(const Arguments&)>> kCommands{
    {"say", Say},
    {"say-much", SayMuch},
    {"exit", [](const Arguments& arguments) { return std::stoi(arguments.at(0)); }},
    {"kill", Kill},
    {"sleep", Sleep},
    {"leave-behind", LeaveBehind},
    {"leave-daemon", LeaveDaemon},
    {"say-forever", SayForever},
    {"log", Log},
    {"log-long", LogLong},
    {"read", Read},
    {"write", Write},
    {"fill", Fill},
    {"list", List},
    {"change-mode", ChangeMode},
    {"environment", Environment},
    {"inheritance", Inheritance},
    {"open-streams", OpenStreams},
    {"--update-config", Update},
};

}  // namespace

int main(int argument_count, char* arguments[]) {
  const Arguments words(arguments + 1, arguments + argument_count);
  return kCommands.at(words.at(0))(Arguments(words.begin() + 1, words.end()));
}
