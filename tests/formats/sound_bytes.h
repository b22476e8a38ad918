// Sound files built byte by byte, sound or broken, independent of any library.

#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <string>

namespace sonorelle {

template<typename Value>
std::string LittleEndian(Value value) {
    std::string bytes(sizeof value, '\0');
    std::memcpy(bytes.data(), &value, sizeof value);
    if constexpr (std::endian::native == std::endian::big) bytes.assign(bytes.rbegin(), bytes.rend());
    return bytes;
}

template<typename Value>
std::string BigEndian(Value value) {
    const std::string bytes = LittleEndian(value);
    return {bytes.rbegin(), bytes.rend()};
}

// Header fields of a WAV file; each can be set to a lie.
struct WavHeader {
    std::uint16_t formatTag = 1; // 1 integer, 3 float, 6 A-law, 7 mu-law
    std::uint16_t channels = 1;
    std::uint32_t sampleRate = 44100;
    std::uint16_t bits = 16;
    std::int64_t claimedDataBytes = -1; // -1: the truth
};

inline std::string WavFile(const WavHeader& header, const std::string& data) {
    const auto blockAlign = static_cast<std::uint16_t>(header.channels * (header.bits / 8));
    const auto dataBytes = static_cast<std::uint32_t>(
        header.claimedDataBytes < 0 ? static_cast<std::int64_t>(data.size()) : header.claimedDataBytes);
    return "RIFF" + LittleEndian<std::uint32_t>(36 + dataBytes) + "WAVEfmt " +
           LittleEndian<std::uint32_t>(16) + LittleEndian(header.formatTag) + LittleEndian(header.channels) +
           LittleEndian(header.sampleRate) + LittleEndian<std::uint32_t>(header.sampleRate * blockAlign) +
           LittleEndian(blockAlign) + LittleEndian(header.bits) + "data" + LittleEndian(dataBytes) + data;
}

// A rate below 65536 as the 80-bit float of AIFF.
inline std::string AiffRate(std::uint32_t rate) {
    std::uint64_t mantissa = rate;
    std::uint16_t exponent = 16383 + 63;
    while (mantissa != 0 && mantissa >> 63 == 0) {
        mantissa <<= 1;
        --exponent;
    }
    return BigEndian(exponent) + BigEndian(mantissa);
}

// Header fields of an AIFF file; with an encoding (4 letters, such as "sowt" or "fl32") it becomes AIFC.
struct AiffHeader {
    std::uint16_t channels = 1;
    std::uint32_t sampleRate = 44100;
    std::uint16_t bits = 16;
    std::string encoding = {};
    std::int64_t claimedFrames = -1; // -1: the truth
};

inline std::string AiffFile(const AiffHeader& header, const std::string& data) {
    const std::size_t frameBytes = header.channels * (header.bits / 8u);
    const auto frames = static_cast<std::uint32_t>(header.claimedFrames < 0
                                                       ? static_cast<std::int64_t>(data.size() / frameBytes)
                                                       : header.claimedFrames);
    const std::string encoding = header.encoding.empty() ? "" : header.encoding + std::string(2, '\0');
    const std::string common = BigEndian(header.channels) + BigEndian(frames) + BigEndian(header.bits) +
                               AiffRate(header.sampleRate) + encoding;
    const std::string body = (header.encoding.empty() ? "AIFF" : "AIFC") + std::string("COMM") +
                             BigEndian(static_cast<std::uint32_t>(common.size())) + common + "SSND" +
                             BigEndian(static_cast<std::uint32_t>(data.size() + 8)) + std::string(8, '\0') +
                             data;
    return "FORM" + BigEndian(static_cast<std::uint32_t>(body.size())) + body;
}

} // namespace sonorelle
