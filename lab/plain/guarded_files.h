#pragma once

namespace lab {

/// What a folder for temporary files is to hold.
enum class Guarded {
  /// Files only.
  Files,
  /// Private roots, in which programs are to run.
  Roots,
};

/// Gives this process and those that it starts from here on a folder for temporary files that only this user
/// may enter, named by TMPDIR: in memory where there is room and programs may run there, else below the
/// former TMPDIR. It goes away with this process. Where a signal ends that, another process, made here,
/// removes it and kills what still runs there; what is left where both were killed goes when this is called
/// the next time. Called once, before any thread exists. Throws std::runtime_error.
void GuardTemporaryFiles(Guarded content);

}  // namespace lab
