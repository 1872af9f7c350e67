#pragma once

#include <functional>
#include <string>
#include <vector>

#include "lab/images/private_root.h"

namespace end_to_end {

/// A change of a device before the program runs on it: what tables of cases are made of. What stands at a
/// path makes way for what comes there.
using Edit = std::function<void(lab::PrivateRoot&)>;
using Edits = std::vector<Edit>;

Edit File(const std::string& path, const std::string& text);
Edit Folder(const std::string& path);
Edit Fifo(const std::string& path);
Edit Link(const std::string& path, const std::string& target);
/// A link to itself, which nothing can be found out about.
Edit Loop(const std::string& path);
Edit Gone(const std::string& path);
Edit Mode(const std::string& path, mode_t mode);
/// The information store says so.
Edit Fact(const std::string& key, const std::string& value);
Edit NoFact(const std::string& key);

/// The sample device `name`, edited.
lab::PrivateRoot Edited(std::string_view name, const Edits& edits);

}  // namespace end_to_end
