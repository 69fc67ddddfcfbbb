// SPDX-License-Identifier: MIT
#include <vekch/vekch.hpp>

int main() { return vekch::Pattern("b+").find("abb")[0] == "bb" ? 0 : 1; }
