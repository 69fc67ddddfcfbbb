#include <vekch/vekch.h>

#include <iostream>
#include <string>

int main() {
  std::string name = "Content-Type";
  auto* bytes = reinterpret_cast<uint8_t*>(name.data());
  veksLowercaseLatin_8u_I(bytes, static_cast<int32_t>(name.size()));
  std::cout << name << '\n';
}
