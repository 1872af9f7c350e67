#ifndef SECOND_PLATFORM_CORE_UTILITIES_H
#define SECOND_PLATFORM_CORE_UTILITIES_H

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Opaque. What is loaded into one takes another one's place: the handle that is given by its address changes.
 */
typedef struct KLIBCSzList KLIBCSzList;
typedef struct KLIBCSzHash KLIBCSzHash;

KLIBCSzList* KLIBCSzListAlloc(size_t capacity);
KLIBCSzHash* KLIBCSzHashAlloc(size_t capacity);
void KLIBCSzListFree(KLIBCSzList* list);
void KLIBCSzHashFree(KLIBCSzHash* table);
char* KLIBCSzListGet(KLIBCSzList* list, int index);
char* KLIBCSzHashGetValue(KLIBCSzHash* table, const char* key);

/* Negative on failure; kNoMemory where that was the reason. */
enum { kNoMemory = -12 };
int ReadSectionNames(const char* path, KLIBCSzList** list);
int ReadSectionEntries(const char* path, const char* name, KLIBCSzHash** table);

/* Every text that is not empty opens, to "plain text of " and its length. Success is 2. */
int KLIBCryptSzDecrypt(const char* stored, char* buffer, size_t capacity);

/* Padding may be missing. Success is 3. */
int KELPEncodingBase64Decode(const char* source, size_t source_length, unsigned char* buffer, size_t* length);

/* 7 where there is a file "/var/second/no_usb3", else 0. */
int KELPUSBGetUSB3DisableUbootEnv(void);

#ifdef __cplusplus
}
#endif

#endif
