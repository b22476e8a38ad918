// Plays a session as a sequencer does: blocks of the host, the keys of each in front of it.
//
//     SessionPlayer player(session, 512);
//     player.SetKeys(contents.messages);              // their time 0 is the host's sample 0
//     session.Host().Play(player.HostSampleOf(app.GetPlayStart()));
//     player.Run(frames, [&](const float* left, const float* right, std::int32_t count) { ...; return true;
//     }); session.Host().Stop();
//
// The transport is the host's own: what runs before Play, or after Stop, is what a sequencer makes of a
// standing song. The sound does not depend on the size of the blocks, but for what the panels make of a
// snapshot that was recalled by a key: they follow ten times a second, after a block.
//
// One thread.

#pragma once

#include "formats/midi_file_reader.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace sonorelle {

class CommandLineSession;

class SessionPlayer {
public:
    static constexpr std::int32_t kMostFrames = 8192; // of a block
    static constexpr std::int32_t kUsualFrames = 512;

    // The mix, block by block. False: no more of it.
    using Sink = std::function<bool(const float* left, const float* right, std::int32_t frames)>;

    // `framesPerBlock`: 1 to kMostFrames. The session is borrowed.
    SessionPlayer(CommandLineSession& lentSession, std::int32_t framesPerBlock);

    // Played along with the transport, each at its sample; those that lie before it are left out.
    void SetKeys(std::vector<MidiFileMessage> messages);
    // For the first sample of the next block.
    void AddKey(std::uint8_t status, std::uint8_t key, std::uint8_t velocity);
    // In samples of the host; 0 without keys.
    double LastKeySample() const;

    // Plays on. False when the sink ended it.
    bool Run(std::int64_t frames, const Sink& sink);

    // The first whole sample of the host at which the melody stands at `frame` or behind it.
    double HostSampleOf(std::int32_t frame);
    // Samples that the region takes.
    std::int64_t RegionFrames();

private:
    struct Key {
        double sample = 0; // of the host
        std::uint8_t bytes[3] = {};
    };

    void SendKeys(std::int32_t frames);
    void SkipKeysBefore(double sample);
    void PollInTime(std::int32_t frames);

    CommandLineSession& session;
    const std::int32_t blockFrames;
    std::vector<float> samples; // of all outputs
    std::vector<float*> outputs;
    std::vector<Key> keys;
    std::size_t nextKey = 0;
    std::vector<Key> immediate;
    double unpolled = 0; // seconds
};

} // namespace sonorelle
