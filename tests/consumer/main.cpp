#include <cstdio>

#include "runtime/EthAddr.h"
#include "runtime/String8.h"

int main() {
  Vesk::String8 greeting = Vesk::String8("macsecd") + " loaded";
  std::printf("%s\n", greeting.charPtr());
  return greeting.length() == 14 ? 0 : 1;
}
