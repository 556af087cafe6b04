// Gives the files of a folder to a fuzz target, one after another, and then with each octet in turn replaced by 0xFF:
// that makes every length huge.

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <utility>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* octets, std::size_t size);

int main(int argc, char** argv) {
  int files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(argc == 2 ? argv[1] : "")) {
    std::ifstream file(entry.path(), std::ios::binary);
    std::vector<std::uint8_t> octets((std::istreambuf_iterator<char>(file)), {});
    LLVMFuzzerTestOneInput(octets.data(), octets.size());
    for (std::uint8_t& octet : octets) {
      const std::uint8_t former = std::exchange(octet, std::uint8_t{0xFF});
      LLVMFuzzerTestOneInput(octets.data(), octets.size());
      octet = former;
    }
    ++files;
  }
  std::printf("%d files\n", files);
  return files > 0 ? 0 : 1;
}
