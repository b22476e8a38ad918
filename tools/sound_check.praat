# praat --run sound_check.praat JOBS: listens to the sounds of a tab-separated table, one a row, with the columns
#   sound     a sound file
#   floor, ceiling   of the pitch, in Hz; the analysis window spans three periods of the floor
#   formants  highest frequency of the five formants in Hz, or 0: pitch alone
#   result    what to write: NAME.frames (seconds, Hz, F1, F2, F3, harmonics-to-noise in dB; one row each 10 ms,
#             "--undefined--" where there is nothing) and NAME.envelope (dB in bands of 100 Hz up to 8 kHz, with the
#             harmonics' spacing taken out)
form Sounds to judge
    sentence Jobs jobs.tsv
endform

step = 0.01
jobTable = Read Table from tab-separated file: jobs$
jobCount = Get number of rows
for job to jobCount
    selectObject: jobTable
    sound$ = Get value: job, "sound"
    lowestPitch = Get value: job, "floor"
    highestPitch = Get value: job, "ceiling"
    highest = Get value: job, "formants"
    result$ = Get value: job, "result"
    @judge
endfor

procedure judge
    whole = Read from file: sound$
    channels = Get number of channels
    if channels > 1
        sound = Extract one channel: 1
        removeObject: whole
    else
        sound = whole
    endif
    duration = Get total duration
    rate = Get sampling frequency
    selectObject: sound
    pitch = To Pitch (ac): step, lowestPitch, 15, "no", 0.03, 0.45, 0.01, 0.35, 0.14, highestPitch
    if highest > 0
        selectObject: sound
        formant = To Formant (burg): step, 5, highest, 0.025, 50
        selectObject: sound
        harmonicity = To Harmonicity (cc): 3 * step, lowestPitch, 0.1, 1.0
    endif
    @writeFrames
    if highest > 0
        @writeEnvelope
        removeObject: formant, harmonicity
    endif
    removeObject: pitch, sound
endproc

procedure writeFrames
    writeFile: result$ + ".frames", ""
    lines$ = ""
    frameCount = floor (duration / step)
    for frame from 1 to frameCount - 1
        now = frame * step
        selectObject: pitch
        hertz = Get value at time: now, "Hertz", "linear"
        line$ = fixed$ (now, 4) + tab$ + string$ (hertz)
        if highest > 0
            selectObject: formant
            f1 = Get value at time: 1, now, "hertz", "linear"
            f2 = Get value at time: 2, now, "hertz", "linear"
            f3 = Get value at time: 3, now, "hertz", "linear"
            selectObject: harmonicity
            hnr = Get value at time: now, "linear"
            line$ = line$ + tab$ + string$ (f1) + tab$ + string$ (f2) + tab$ + string$ (f3) + tab$ + string$ (hnr)
        endif
        lines$ = lines$ + line$ + newline$
        if frame mod 200 = 0
            appendFile: result$ + ".frames", lines$
            lines$ = ""
        endif
    endfor
    appendFile: result$ + ".frames", lines$
endproc

procedure writeEnvelope
    selectObject: sound
    top = min (8000, rate / 2 - 100)
    envelope = To Ltas (pitch-corrected): lowestPitch, highestPitch, top, 100, 0.0001, 0.03, 1.3
    bins = Get number of bins
    levels$ = ""
    for bin to bins
        level = Get value in bin: bin
        levels$ = levels$ + string$ (level) + newline$
    endfor
    writeFile: result$ + ".envelope", levels$
    removeObject: envelope
endproc
