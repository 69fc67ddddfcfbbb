// SPDX-License-Identifier: MIT

// The encodings of text that are read and written.

#ifndef EXAMPLES_COMMON_ENCODING_H
#define EXAMPLES_COMMON_ENCODING_H

namespace examples {

enum class Encoding { kUtf8, kUtf16Le, kUtf16Be, kLatin1 };

}  // namespace examples

#endif
