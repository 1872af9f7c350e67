#pragma once

#include <cstddef>

/// Opens the secret `stored`: standard base64 of a 24-byte nonce followed by the box that libsodium's
/// crypto_secretbox_easy made, zero-terminated. The key is read anew for each secret from
/// "/usr/kelp/etc/secret.key": 64 hexadecimal digits, a trailing newline is fine.
///
/// Writes the plain text and its NUL to `buffer` of `capacity` bytes and gives 1. Gives 0, and leaves the
/// buffer without any plain text, for a missing or malformed key, a wrong one, malformed or tampered text, a
/// plain text that holds a NUL, and one that does not fit together with its NUL.
int KLIBCryptSzDecrypt(const char* stored, char* buffer, std::size_t capacity);
