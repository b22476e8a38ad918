// A host and a toolkit for the tests of the plug-in's core: everything that the core asks is written down,
// every answer is set beforehand.
#pragma once

#include "app/toolkit.h"
#include "host/host_operations.h"
#include <atomic>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace sonorelle::test {

struct SentBlock {
    std::vector<VstMidiEvent> events;
};

class ScriptedHost : public CkvoHost {
public:
    const VstTimeInfo* GetTimeInfo(std::int32_t filter) override {
        lastFilter.store(filter, std::memory_order_relaxed);
        if (!hasTime) return nullptr;
        // A record for each thread that asks: the next block is not to change what a load still reads.
        thread_local VstTimeInfo answer;
        const std::lock_guard guard(timeLock);
        answer = time;
        return &answer;
    }
    std::int32_t GetCurrentProcessLevel() override { return processLevel; }
    float GetSampleRate() override { return sampleRate; }
    std::int32_t GetOutputLatency() override { return latency; }
    void SetParameterAutomated(std::int32_t index, float value) override {
        const std::lock_guard guard(lock);
        automated.emplace_back(index, value);
    }
    void SendVstEventsToHost(VstEvents* events) override {
        sentCount += events->numEvents;
        ++sentBlocks;
        if (!keepEvents) return;
        SentBlock block;
        for (std::int32_t i = 0; i < events->numEvents; ++i)
            block.events.push_back(*reinterpret_cast<const VstMidiEvent*>(EventSlots(*events)[i]));
        sent.push_back(std::move(block));
    }

    // Transport. With several threads, `time` is written under timeLock.
    void Play(bool on) {
        const std::lock_guard guard(timeLock);
        time.flags =
            kVstTempoValid | kVstTimeSigValid | (on ? kVstTransportPlaying : 0) | kVstTransportChanged;
    }
    void Advance(std::int32_t frames) {
        const std::lock_guard guard(timeLock);
        if ((time.flags & kVstTransportPlaying) != 0) time.samplePos += frames;
        time.flags &= ~kVstTransportChanged;
    }

    VstTimeInfo time = [] {
        VstTimeInfo start;
        start.tempo = 100;
        start.timeSigNumerator = 3;
        start.timeSigDenominator = 4;
        start.flags = kVstTempoValid | kVstTimeSigValid;
        return start;
    }();
    std::recursive_mutex timeLock;
    bool hasTime = true;
    std::int32_t processLevel = 2;
    float sampleRate = 44100;
    std::int32_t latency = 256;
    bool keepEvents = true; // false: only counted, without allocating

    std::mutex lock;
    std::vector<std::pair<std::int32_t, float>> automated;
    std::vector<SentBlock> sent;
    std::int32_t sentCount = 0;
    std::int32_t sentBlocks = 0;
    std::atomic<std::int32_t> lastFilter{0};
};

class ScriptedToolkit : public CkvoToolkit {
public:
    bool IsInterfaceThread() const override { return std::this_thread::get_id() == interfaceThread; }
    bool RunEvents() override {
        ++passes;
        if (onEvents) onEvents();
        return true;
    }
    void SetTimer(double seconds, TimerCallback callback, void* context) override {
        RemoveTimer(callback, context);
        timers.push_back({seconds, callback, context});
    }
    void RemoveTimer(TimerCallback callback, void* context) override {
        std::erase_if(timers, [&](const Timer& t) { return t.callback == callback && t.context == context; });
    }
    void ShowMessage(const std::string& title, const std::string& text) override {
        messages.push_back(title + " " + text);
        if (onMessage) onMessage();
    }
    std::string ChooseFileToOpen(const std::string& title, const std::string& filter) override {
        questions.push_back(title);
        filters.push_back(filter);
        return NextAnswer();
    }
    std::string ChooseFileToSave(const std::string& title, const std::string&, const std::string&) override {
        questions.push_back(title);
        return NextAnswer();
    }
    std::int32_t ChooseFromMenu(const PopupMenu&) override {
        ++menus;
        if (onQuestion) onQuestion();
        return menuChoice;
    }
    void OpenProgress() override { ++progressWindows; }
    bool IsProgressCancelled() override { return cancelProgress; }
    void CloseProgress() override { --progressWindows; }
    void ActivateMainWindow(bool active) override { windowActive.push_back(active); }

    // All timers that are set fire once.
    void FireTimers() {
        const std::vector<Timer> due = std::exchange(timers, {});
        for (const Timer& timer : due) timer.callback(timer.context);
    }

    struct Timer {
        double seconds;
        TimerCallback callback;
        void* context;
    };
    std::thread::id interfaceThread = std::this_thread::get_id();
    std::vector<Timer> timers;
    std::vector<std::string> messages;
    std::vector<std::string> questions;
    std::vector<std::string> filters;
    std::deque<std::string> answers; // of file dialogs; none left: cancelled
    std::vector<bool> windowActive;
    std::function<void()> onEvents;
    std::function<void()> onQuestion; // menus and file dialogs, before they are answered
    std::function<void()> onMessage;
    std::int32_t menuChoice = PopupItem::kNothing;
    bool cancelProgress = false;
    int progressWindows = 0;
    int menus = 0;
    int passes = 0;

private:
    std::string NextAnswer() {
        if (onQuestion) onQuestion();
        if (answers.empty()) return {};
        std::string answer = answers.front();
        answers.pop_front();
        return answer;
    }
};

} // namespace sonorelle::test
