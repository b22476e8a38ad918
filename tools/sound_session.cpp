#include "sound_session.h"

#include "praat_judge.h"
#include "sound_singer.h"

#include "support/wav_writer.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

namespace sonorelle::tools {
namespace {

using Sound = std::vector<float>;
using Sounds = std::map<int, Sound>; // by interval

constexpr PitchRange kAnyVoice{60.0, 1000.0};

double RatioOf(int semitones) { return std::exp2(semitones / 12.0); }

std::filesystem::path FileOf(const std::filesystem::path& folder, const char* what, int semitones) {
    return folder / (what + std::string(semitones < 0 ? "-down-" : "-up-") +
                     std::to_string(std::abs(semitones)) + ".wav");
}

bool Write(const std::filesystem::path& file, const Sound& sound, double sampleRate) {
    test::Recording recording;
    recording.sampleRate = sampleRate;
    recording.channels = {sound};
    return test::WriteWav(file, recording, test::WavSamples::kFloat32);
}

// The lead stays where it was sung and keeps the clock; three intervals at a time for the others.
std::optional<Sounds> SingAll(SoundSinger& singer) {
    Sounds sounds;
    std::vector<int> waiting;
    for (const int interval : kIntervals)
        if (interval != 0) waiting.push_back(interval);
    while (waiting.size() % 3 != 0) waiting.push_back(0); // a place that is left over
    for (std::size_t i = 0; i < waiting.size(); i += 3) {
        auto voices = singer.Sing({0, waiting[i], waiting[i + 1], waiting[i + 2]});
        if (!voices) return std::nullopt;
        for (std::size_t voice = 1; voice < SoundSinger::kVoices; ++voice)
            sounds[waiting[i + voice - 1]] = std::move((*voices)[voice]);
        sounds[0] = std::move((*voices)[0]);
    }
    return sounds;
}

constexpr double kLargestStartSeconds = 0.02;
constexpr std::size_t kLagStride = 11;

// Moved to the front by `lag` frames, of the same length.
void TakeOut(Sound& sound, std::int64_t lag) {
    const std::size_t frames = sound.size();
    if (lag > 0)
        sound.erase(sound.begin(), sound.begin() + lag);
    else
        sound.insert(sound.begin(), static_cast<std::size_t>(-lag), 0.0F);
    sound.resize(frames, 0.0F);
}

// Range of the judge's pitches at an interval.
PitchRange Moved(const PitchRange& range, double ratio) {
    return {range.floorHertz * ratio, range.ceilingHertz * ratio};
}

// Everything that is compared of one sound.
struct Session {
    std::filesystem::path folder;
    std::unique_ptr<SoundSinger> singer;
    Sound source;
    Places places;
    Sounds voices;
    std::int64_t lag = 0; // of the voices, already taken out
    std::vector<PraatJob> jobs;
    std::vector<HeardSound> heard;

    std::size_t AddJob(const std::filesystem::path& file, const PitchRange& pitch, double formants) {
        jobs.push_back({file, pitch, formants});
        return jobs.size() - 1;
    }
    // The jobs of the voices by interval. `sameWindow`: those above the source are heard through its window.
    std::map<int, std::size_t> AddVoices(bool sameWindow);
    bool ListenToAll() {
        heard = Listen(jobs, folder);
        return heard.size() == jobs.size();
    }
};

std::map<int, std::size_t> Session::AddVoices(bool sameWindow) {
    std::map<int, std::size_t> added;
    for (const auto& [interval, sound] : voices) {
        const std::filesystem::path file = FileOf(folder, "voice", interval);
        Write(file, sound, singer->SampleRate());
        PitchRange pitch = Moved(places.pitch, RatioOf(interval));
        if (sameWindow) pitch.floorHertz = std::min(pitch.floorHertz, places.pitch.floorHertz);
        added[interval] = AddJob(file, pitch, places.formantCeilingHertz);
    }
    return added;
}

std::map<int, double> MoveLead(Session& session, const HeardSound& heard) {
    SoundSinger& singer = *session.singer;
    std::map<int, double> largest;
    for (const int interval : kIntervals) {
        auto voices = singer.Sing({interval, interval, 0, 0});
        if (!voices) continue;
        TakeOut((*voices)[0], session.lag);
        const Comparison comparison{
            {session.source, &heard}, {(*voices)[0], &heard},
            singer.SampleRate(),      RatioOf(interval),
            &session.places,          [](double) { return std::numeric_limits<double>::quiet_NaN(); }};
        largest[interval] = Furthest(Compare(comparison).onsetsMilliseconds);
    }
    return largest;
}

std::optional<Session> Open(const std::filesystem::path& file, const std::filesystem::path& folder) {
    Session session;
    session.folder = folder;
    session.singer = SoundSinger::Open(file);
    if (session.singer != nullptr) {
        session.source = session.singer->Source();
        if (auto voices = SingAll(*session.singer)) {
            session.voices = std::move(*voices);
            const auto largest =
                static_cast<std::size_t>(kLargestStartSeconds * session.singer->SampleRate());
            session.lag = test::WholeLag(session.source, session.voices[0], largest, kLagStride);
            for (auto& [interval, voice] : session.voices) TakeOut(voice, session.lag);
            return session;
        }
    }
    std::fprintf(stderr, "%s: the engine does not sing it\n", file.c_str());
    return std::nullopt;
}

} // namespace

std::optional<SoundResult> CheckSong(const Song& song, const std::filesystem::path& folder) {
    const test::Recording truth = song.Sung(0);
    const std::filesystem::path file = folder / "song.wav";
    if (!test::WriteWav(file, truth)) return std::nullopt;
    std::optional<Session> session = Open(file, folder);
    if (!session) return std::nullopt;
    session->places = PlacesOf(truth, song.settings.voice);
    const Places& places = session->places;
    const std::size_t sourceJob = session->AddJob(file, places.pitch, places.formantCeilingHertz);
    const std::map<int, std::size_t> voiceJobs = session->AddVoices(false);
    std::map<int, test::Recording> ideals;
    std::map<int, std::size_t> idealJobs;
    for (const int interval : kIntervals) {
        ideals[interval] = song.Sung(interval);
        const std::filesystem::path idealFile = FileOf(folder, "ideal", interval);
        test::WriteWav(idealFile, ideals[interval], test::WavSamples::kFloat32);
        idealJobs[interval] =
            session->AddJob(idealFile, Moved(places.pitch, RatioOf(interval)), places.formantCeilingHertz);
    }
    if (!session->ListenToAll()) return std::nullopt;

    SoundResult result;
    result.name = song.name;
    result.analysedNotes = static_cast<std::size_t>(session->singer->NoteCount());
    const HeardSound& heardSource = session->heard[sourceJob];
    for (const int interval : kIntervals) {
        const double ratio = RatioOf(interval);
        const double floorHertz = places.pitch.floorHertz * ratio;
        // Of the singer of the source, or of the ideal voice, whose random numbers lie at other times.
        const auto target = [&](const test::Recording& recording, double factor) {
            return [&recording, floorHertz, factor](double seconds) {
                const double hertz = recording.HertzAt(seconds) * factor;
                if (!(hertz > 0.0)) return std::numeric_limits<double>::quiet_NaN();
                return SungHertz(recording, seconds, floorHertz, 1.0 / hertz) * factor;
            };
        };
        const JudgedSound source{session->source, &heardSource};
        const JudgedSound voice{session->voices[interval], &session->heard[voiceJobs.at(interval)]};
        const JudgedSound ideal{ideals[interval].channels[0], &session->heard[idealJobs.at(interval)]};
        const double rate = truth.sampleRate;
        const Comparison sung{source, voice, rate, ratio, &places, target(truth, ratio)};
        result.voices[interval] = Compare(sung);
        result.ideal[interval] =
            Compare({source, ideal, rate, ratio, &places, target(ideals[interval], 1.0)});
        result.againstIdeal[interval] = Compare({ideal, voice, rate, 1.0, &places, target(truth, ratio)});
        if (interval == 0) result.unison = CompareUnison(sung);
    }
    result.leadOnsetMilliseconds = MoveLead(*session, heardSource);
    result.startMilliseconds = 1e3 * static_cast<double>(session->lag) / session->singer->SampleRate();
    return result;
}

std::optional<SoundResult> CheckRecording(const std::filesystem::path& file,
                                          const std::filesystem::path& folder) {
    std::optional<Session> session = Open(file, folder);
    if (!session) return std::nullopt;
    const double rate = session->singer->SampleRate();
    const std::filesystem::path sourceFile = folder / "source.wav";
    if (!Write(sourceFile, session->source, rate)) return std::nullopt;
    const std::vector<HeardSound> first = Listen({{sourceFile, kAnyVoice, 0.0}}, folder);
    if (first.empty()) return std::nullopt;
    session->places = PlacesOf(first.front(), session->source, rate);
    const Places& places = session->places;
    const std::size_t sourceJob = session->AddJob(sourceFile, places.pitch, places.formantCeilingHertz);
    const std::map<int, std::size_t> voiceJobs = session->AddVoices(true);
    // The source once more through the longer windows of the voices below it.
    std::map<int, std::size_t> targetJobs;
    for (const int interval : kIntervals)
        if (interval < 0)
            targetJobs[interval] = session->AddJob(
                sourceFile, {places.pitch.floorHertz * RatioOf(interval), places.pitch.ceilingHertz}, 0.0);
    if (!session->ListenToAll()) return std::nullopt;

    SoundResult result;
    result.name = file.filename().string();
    result.analysedNotes = static_cast<std::size_t>(session->singer->NoteCount());
    const HeardSound& heardSource = session->heard[sourceJob];
    for (const int interval : kIntervals) {
        const double ratio = RatioOf(interval);
        const HeardSound& heardTarget = session->heard[interval < 0 ? targetJobs.at(interval) : sourceJob];
        const Comparison sung{{session->source, &heardSource},
                              {session->voices[interval], &session->heard[voiceJobs.at(interval)]},
                              rate,
                              ratio,
                              &places,
                              [&heardTarget, ratio](double seconds) {
                                  const HeardFrame* const frame = heardTarget.At(seconds);
                                  return frame != nullptr ? frame->hertz * ratio : std::nan("");
                              }};
        result.voices[interval] = Compare(sung);
        if (interval == 0) result.unison = CompareUnison(sung);
    }
    result.leadOnsetMilliseconds = MoveLead(*session, heardSource);
    result.startMilliseconds = 1e3 * static_cast<double>(session->lag) / session->singer->SampleRate();
    return result;
}

} // namespace sonorelle::tools
