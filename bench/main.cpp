// SPDX-License-Identifier: MIT
#include "bench/ratios.h"

int main(int argc, char** argv) { return vekch_bench::RunAllFamilies(argc, argv); }
