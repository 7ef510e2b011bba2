// Entry points of one fuzz program. FUZZ_TARGET is its function; built without the fuzzer's own headers.
#include <cstddef>
#include <cstdint>

#include "targets.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FUZZ_TARGET({reinterpret_cast<const char*>(data), size});
    return 0;
}
