#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <map>

namespace lab::commands {

/// What each sub-command does once its arguments are read; gives the exit status.
using Actions = std::map<const CLI::App*, std::function<int()>>;

// One function a sub-command: adds it with its arguments to `app`, and what it does to `actions`.

void AddRun(CLI::App& app, Actions& actions);
void AddExplain(CLI::App& app, Actions& actions);
void AddFleet(CLI::App& app, Actions& actions);
void AddSummary(CLI::App& app, Actions& actions);
void AddCompare(CLI::App& app, Actions& actions);
void AddNew(CLI::App& app, Actions& actions);
void AddShow(CLI::App& app, Actions& actions);
void AddDescribe(CLI::App& app, Actions& actions);
void AddSeal(CLI::App& app, Actions& actions);
void AddBootEnvironment(CLI::App& app, Actions& actions);

}  // namespace lab::commands
