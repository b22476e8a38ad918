#include "support/wav_writer.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <string>

namespace sonorelle::test {

namespace {

void AppendLittleEndian(std::string& bytes, std::uint32_t value, int count) {
    for (int i = 0; i < count; ++i) bytes.push_back(static_cast<char>((value >> (8 * i)) & 0xFF));
}

std::uint32_t Encoded(float sample, WavSamples samples) {
    if (samples == WavSamples::kFloat32) return std::bit_cast<std::uint32_t>(sample);
    const double full = samples == WavSamples::kInt16 ? 32768.0 : 8388608.0;
    const double rounded = std::floor(static_cast<double>(sample) * full + 0.5);
    return static_cast<std::uint32_t>(static_cast<std::int32_t>(std::clamp(rounded, -full, full - 1.0)));
}

std::string Header(const Recording& recording, WavSamples samples, int bytesPerSample,
                   std::uint32_t dataBytes) {
    const auto channels = static_cast<std::uint32_t>(recording.channels.size());
    const auto rate = static_cast<std::uint32_t>(recording.sampleRate);
    const auto width = static_cast<std::uint32_t>(bytesPerSample);
    std::string header = "RIFF";
    AppendLittleEndian(header, 36 + dataBytes, 4);
    header += "WAVEfmt ";
    AppendLittleEndian(header, 16, 4);
    AppendLittleEndian(header, samples == WavSamples::kFloat32 ? 3 : 1, 2); // IEEE float or PCM
    AppendLittleEndian(header, channels, 2);
    AppendLittleEndian(header, rate, 4);
    AppendLittleEndian(header, rate * channels * width, 4);
    AppendLittleEndian(header, channels * width, 2);
    AppendLittleEndian(header, 8 * width, 2);
    header += "data";
    AppendLittleEndian(header, dataBytes, 4);
    return header;
}

} // namespace

bool WriteWav(const std::filesystem::path& path, const Recording& recording, WavSamples samples) {
    const int bytesPerSample = samples == WavSamples::kInt16 ? 2 : samples == WavSamples::kInt24 ? 3 : 4;
    const auto dataBytes = static_cast<std::uint32_t>(recording.Frames() * recording.channels.size()) *
                           static_cast<std::uint32_t>(bytesPerSample);
    std::ofstream file(path, std::ios::binary);
    std::string bytes = Header(recording, samples, bytesPerSample, dataBytes);
    for (std::size_t n = 0; n < recording.Frames(); ++n) {
        for (const auto& channel : recording.channels)
            AppendLittleEndian(bytes, Encoded(channel[n], samples), bytesPerSample);
        if (bytes.size() > 1 << 20) {
            file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
            bytes.clear();
        }
    }
    if (dataBytes % 2 == 1) bytes.push_back('\0'); // chunks have an even length
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    return !file.fail();
}

} // namespace sonorelle::test
