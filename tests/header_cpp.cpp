// SPDX-License-Identifier: MIT
#include "header_c99.c"
