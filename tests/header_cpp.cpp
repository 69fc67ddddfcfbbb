// SPDX-License-Identifier: MIT
#include "header_use.h"

int main() { return UseHeader(); }
