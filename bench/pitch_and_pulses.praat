# What praat does that comes nearest to our marks: pitch by autocorrelation, and a point process of glottal pulses.
form Recording
    sentence file
endform
sound = Read from file: file$
pitch = To Pitch: 0, 60, 1000
selectObject: sound, pitch
pulses = To PointProcess (cc)
number = Get number of points
writeInfoLine: number
