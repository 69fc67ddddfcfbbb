// SPDX-License-Identifier: MIT
#include "header_use.h"

int main(void) { return UseHeader(); }
