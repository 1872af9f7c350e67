#pragma once

#include <cstddef>

/// Decodes the `source_length` bytes at `source`: standard base64 with padding, every byte used; white space,
/// a missing padding and every other byte outside the alphabet are refused. The empty text decodes to
/// nothing.
///
/// `*length` is the capacity of `buffer` in bytes before the call and the decoded length after it. Nothing is
/// written behind the capacity, and no NUL behind the decoded bytes.
/// Gives 1 on success and 0 on failure; `*length` and `buffer` mean nothing then.
int KELPEncodingBase64Decode(const char* source, std::size_t source_length, unsigned char* buffer,
                             std::size_t* length);
