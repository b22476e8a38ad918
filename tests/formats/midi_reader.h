// Reads Standard MIDI Files the plain way, so that tests see what a sequencer would see.

#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace sonorelle {

struct MidiRead {
    struct Event {
        std::uint32_t delta = 0; // ticks since the event before
        int status = 0;          // whole status byte; 0xFF for a meta event
        int metaType = 0;
        std::string data;
        bool operator==(const Event&) const = default;
    };
    int format = 0;
    int division = 0;
    std::vector<std::vector<Event>> tracks; // each with its end-of-track event
};

// Throws std::runtime_error where the file is not one, or is cut off, or goes on behind its end.
class CMidiReader {
public:
    explicit CMidiReader(const std::string& bytes) : bytes_(bytes) {}

    MidiRead Read() {
        MidiRead read;
        Expect("MThd");
        if (Number(4) != 6) throw std::runtime_error("length of the header");
        read.format = static_cast<int>(Number(2));
        const std::uint32_t tracks = Number(2);
        read.division = static_cast<int>(Number(2));
        for (std::uint32_t i = 0; i < tracks; ++i) read.tracks.push_back(ReadTrack());
        if (at_ != bytes_.size()) throw std::runtime_error("bytes behind the last track");
        return read;
    }

private:
    std::vector<MidiRead::Event> ReadTrack() {
        Expect("MTrk");
        const std::uint32_t length = Number(4);
        const std::size_t end = at_ + length;
        std::vector<MidiRead::Event> events;
        while (at_ < end) {
            events.push_back(ReadEvent());
            const bool last = events.back().status == 0xFF && events.back().metaType == 0x2F;
            if (last != (at_ == end))
                throw std::runtime_error("the end of a track is not where its length says");
        }
        return events;
    }

    MidiRead::Event ReadEvent() {
        MidiRead::Event event;
        event.delta = VariableLength();
        event.status = static_cast<int>(Number(1));
        if (event.status == 0xFF) {
            event.metaType = static_cast<int>(Number(1));
            event.data = Take(VariableLength());
        } else if (event.status >= 0x80 && event.status < 0xA0) {
            event.data = Take(2);
        } else {
            throw std::runtime_error("not the status of a note: " + std::to_string(event.status));
        }
        return event;
    }

    std::uint32_t VariableLength() {
        std::uint32_t value = 0;
        for (std::uint32_t byte = 0x80; byte & 0x80;) {
            byte = Number(1);
            value = value * 128 + byte % 128;
        }
        return value;
    }

    std::uint32_t Number(std::size_t length) {
        std::uint32_t value = 0;
        for (const char c : Take(length)) value = value * 256 + static_cast<unsigned char>(c);
        return value;
    }

    std::string Take(std::size_t length) {
        if (length > bytes_.size() - at_) throw std::runtime_error("cut off");
        at_ += length;
        return bytes_.substr(at_ - length, length);
    }

    void Expect(const std::string& text) {
        if (Take(text.size()) != text) throw std::runtime_error("no " + text);
    }

    const std::string& bytes_;
    std::size_t at_ = 0;
};

} // namespace sonorelle
