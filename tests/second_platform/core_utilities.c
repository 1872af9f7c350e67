#include "platform/core_utilities.h"

#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

enum { kLongestLine = 1024 };

struct KLIBCSzList {
  int count;
  char** texts;
};

/* Each value stands behind its key. */
struct KLIBCSzHash {
  KLIBCSzList pairs;
};

static void Clear(KLIBCSzList* list) {
  for (int i = 0; i < list->count; ++i) free(list->texts[i]);
  free(list->texts);
  list->texts = NULL;
  list->count = 0;
}

static int Append(KLIBCSzList* list, const char* text) {
  char** const texts = realloc(list->texts, ((size_t)list->count + 1) * sizeof *texts);
  if (texts == NULL) return 0;
  list->texts = texts;
  char* const copy = malloc(strlen(text) + 1);
  if (copy == NULL) return 0;
  strcpy(copy, text);
  texts[list->count++] = copy;
  return 1;
}

KLIBCSzList* KLIBCSzListAlloc(size_t capacity) {
  (void)capacity;
  return calloc(1, sizeof(KLIBCSzList));
}

KLIBCSzHash* KLIBCSzHashAlloc(size_t capacity) {
  (void)capacity;
  return calloc(1, sizeof(KLIBCSzHash));
}

void KLIBCSzListFree(KLIBCSzList* list) {
  if (list == NULL) return;
  Clear(list);
  free(list);
}

void KLIBCSzHashFree(KLIBCSzHash* table) {
  if (table == NULL) return;
  Clear(&table->pairs);
  free(table);
}

char* KLIBCSzListGet(KLIBCSzList* list, int index) {
  return index < list->count ? list->texts[index] : NULL;
}

char* KLIBCSzHashGetValue(KLIBCSzHash* table, const char* key) {
  for (int i = 0; i + 1 < table->pairs.count; i += 2) {
    if (strcmp(table->pairs.texts[i], key) == 0) return table->pairs.texts[i + 1];
  }
  return NULL;
}

/* Gives a line without its end, or null behind the last. */
static char* NextLine(FILE* file, char* line) {
  if (fgets(line, kLongestLine, file) == NULL) return NULL;
  line[strcspn(line, "\n")] = '\0';
  return line;
}

/* The name that a line opens a section with, or null. */
static char* Header(char* line) {
  const size_t length = strlen(line);
  if (length < 2 || line[0] != '[' || line[length - 1] != ']') return NULL;
  line[length - 1] = '\0';
  return line + 1;
}

int ReadSectionNames(const char* path, KLIBCSzList** list) {
  KLIBCSzList* const names = KLIBCSzListAlloc(0);
  FILE* const file = fopen(path, "r");
  if (names == NULL || file == NULL) {
    const int result = names == NULL || errno == ENOMEM ? kNoMemory : -5;
    if (file != NULL) fclose(file);
    KLIBCSzListFree(names);
    return result;
  }
  char line[kLongestLine];
  int is_whole = 1;
  while (is_whole && NextLine(file, line) != NULL) {
    const char* const name = Header(line);
    if (name != NULL) is_whole = Append(names, name);
  }
  is_whole = is_whole && !ferror(file);  // its buffer needs memory, too
  fclose(file);
  if (!is_whole) {
    KLIBCSzListFree(names);
    return kNoMemory;
  }
  KLIBCSzListFree(*list);
  *list = names;
  return names->count;
}

int ReadSectionEntries(const char* path, const char* name, KLIBCSzHash** table) {
  KLIBCSzHash* const entries = KLIBCSzHashAlloc(0);
  FILE* const file = fopen(path, "r");
  if (entries == NULL || file == NULL) {
    const int result = entries == NULL || errno == ENOMEM ? kNoMemory : -5;
    if (file != NULL) fclose(file);
    KLIBCSzHashFree(entries);
    return result;
  }
  char line[kLongestLine];
  int inside = 0;
  int is_whole = 1;
  while (is_whole && NextLine(file, line) != NULL) {
    const char* const header = Header(line);
    if (header != NULL) inside = strcmp(header, name) == 0;
    char* const equals = strchr(line, '=');
    if (!inside || header != NULL || equals == NULL) continue;
    *equals = '\0';
    is_whole = Append(&entries->pairs, line) && Append(&entries->pairs, equals + 1);
  }
  is_whole = is_whole && !ferror(file);
  fclose(file);
  if (!is_whole) {
    KLIBCSzHashFree(entries);
    return kNoMemory;
  }
  const int is_empty = entries->pairs.count == 0;
  KLIBCSzHashFree(*table);
  *table = entries;
  return is_empty ? 0 : 1;
}

int KLIBCryptSzDecrypt(const char* stored, char* buffer, size_t capacity) {
  if (*stored == '\0') return 0;
  snprintf(buffer, capacity, "plain text of %zu", strlen(stored));
  return 2;
}

int KELPEncodingBase64Decode(const char* source, size_t source_length, unsigned char* buffer,
                             size_t* length) {
  static const char digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  const size_t capacity = *length;
  unsigned long bits = 0;
  unsigned count = 0;
  *length = 0;
  for (size_t i = 0; i < source_length && source[i] != '='; ++i) {
    const char* const digit = source[i] == '\0' ? NULL : strchr(digits, source[i]);
    if (digit == NULL) return 0;
    bits = (bits << 6U | (unsigned long)(digit - digits)) & 0xFFFFFFUL;
    count += 6;
    if (count < 8) continue;
    count -= 8;
    if (*length == capacity) return 0;
    buffer[(*length)++] = (unsigned char)(bits >> count & 0xFFU);
  }
  return 3;
}

int KELPUSBGetUSB3DisableUbootEnv(void) {
  FILE* const file = fopen("/var/second/no_usb3", "r");
  if (file == NULL) return 0;
  fclose(file);
  return 7;
}
