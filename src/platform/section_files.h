#pragma once

#include <cstddef>

/// Ini-style section files and the lists and tables that they are read into, as the core utility library
/// offers them. All texts are bytes, zero-terminated. Every call answers for the file as it is at that
/// moment; within one run of the program it may answer for what the file was, or that there was none, when
/// the run first asked.

/// A growing list of strings.
struct KLIBCSzList;
/// A growing table of strings by string keys.
struct KLIBCSzHash;

/// New and empty, with room for `capacity` bytes of text before it has to grow. Null when out of memory.
KLIBCSzList* KLIBCSzListAlloc(std::size_t capacity);
KLIBCSzHash* KLIBCSzHashAlloc(std::size_t capacity);

/// Releases what Alloc gave; null is fine.
void KLIBCSzListFree(KLIBCSzList* list);
void KLIBCSzHashFree(KLIBCSzHash* table);

/// The string at `index` (0 for the first), null behind the end. Valid until the list changes.
const char* KLIBCSzListGet(const KLIBCSzList* list, int index);

/// The value under `key`, null when there is none. Valid until the table changes.
const char* KLIBCSzHashGetValue(const KLIBCSzHash* table, const char* key);

/// Replaces the list's contents by the names of the sections in the file at `path`, in file order, each once.
/// Gives their number, 0 for none, or a negative number when the file is missing or unreadable. Throws
/// std::bad_alloc when memory runs out.
int KLIBCFileEnumSection(const char* path, KLIBCSzList** list);

/// Replaces the table's contents by the entries of the section `name` of the file at `path`; of two entries
/// with one key the first counts. Gives the number of entries, 0 when the section has none or does not exist,
/// or a negative number when the file is missing or unreadable. Throws std::bad_alloc when memory runs out: a
/// section that cannot be loaded is passed over, and must not be taken for one that is not there.
int KLIBCFileGetSection(const char* path, const char* name, KLIBCSzHash** table);
