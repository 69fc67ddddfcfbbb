// SPDX-License-Identifier: MIT

// The encodings of text that are read and written.

#ifndef VEKTEXT_ENCODING_H
#define VEKTEXT_ENCODING_H

namespace examples::vektext {

enum class Encoding { kUtf8, kUtf16Le, kUtf16Be };

}  // namespace examples::vektext

#endif
