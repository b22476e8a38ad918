// Stands in for libFuzzer in the ordinary test run: feeds each file of a folder, cut off at several places,
// and the empty input to the fuzz target. Fails when the folder holds no file.
//
//     replay_NAME fuzz/corpus/NAME

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

using Bytes = std::vector<std::uint8_t>;

// An exact copy: reading one byte too far leaves the allocation, which AddressSanitizer sees.
void Feed(const Bytes& bytes, std::size_t size) {
    const Bytes part(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
    LLVMFuzzerTestOneInput(part.data(), part.size());
}

int FeedWithTruncations(const Bytes& bytes) {
    const std::size_t size = bytes.size();
    std::vector<std::size_t> sizes = {size / 4, size / 2, size - size / 4,
                                      size - std::min<std::size_t>(size, 1), size};
    sizes.erase(std::unique(sizes.begin(), sizes.end()), sizes.end());
    for (const std::size_t length : sizes) Feed(bytes, length);
    return static_cast<int>(sizes.size());
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s FOLDER\n", argv[0]);
        return 2;
    }
    std::error_code error;
    std::vector<std::filesystem::path> paths;
    for (std::filesystem::directory_iterator entry(argv[1], error), end; !error && entry != end;
         entry.increment(error))
        if (entry->is_regular_file()) paths.push_back(entry->path());
    if (error || paths.empty()) {
        std::fprintf(stderr, "%s: no file to replay in %s\n", argv[0], argv[1]);
        return 1;
    }
    std::sort(paths.begin(), paths.end());

    Feed({}, 0);
    int inputs = 1;
    for (const auto& path : paths) {
        std::ifstream file(path, std::ios::binary);
        const std::string text(std::istreambuf_iterator<char>(file), {});
        if (!file || text.empty()) {
            std::fprintf(stderr, "%s: cannot read %s\n", argv[0], path.c_str());
            return 1;
        }
        inputs += FeedWithTruncations(Bytes(text.begin(), text.end()));
    }
    std::printf("%zu files, %d inputs\n", paths.size(), inputs);
    return 0;
}
