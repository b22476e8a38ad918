// What the program says of itself. Lines are made for a terminal of 80 columns.

#pragma once

namespace sonorelle {

inline constexpr const char* kDescription =
    "Sonorelle hears the melody in a recording of one voice and arranges it for up to four.";
inline constexpr const char* kFooter = "Examples:\n"
                                       "  sonorelle analyse song.wav --picture song.svg\n"
                                       "  sonorelle arrange song.wav -o out\n"
                                       "  sonorelle session --script song.script\n"
                                       "\n"
                                       "'sonorelle analyse --help', 'sonorelle arrange --help' and\n"
                                       "'sonorelle session --help' tell more.";
inline constexpr const char* kAnalyseDescription =
    "Finds the notes, the key and the tuning of each recording and prints them as a table.";
inline constexpr const char* kAnalyseFooter =
    "Pitches are names against A4 = 440 Hz with the rest in cents; middle C is C4.\n"
    "\n"
    "The results are kept beside each recording, in FILE.kva, and are used again as\n"
    "long as that file is newer than the recording.\n"
    "\n"
    "JSON is one object a recording, each on a line of its own. CSV has a line of\n"
    "headings; with several recordings a first column names the file.\n"
    "\n"
    "Exit codes: 0 done; 1 a recording failed (the others were done); 2 wrong use;\n"
    "130 cancelled by Ctrl-C, and the recording in work leaves nothing behind.\n"
    "\n"
    "Examples:\n"
    "  sonorelle analyse song.wav\n"
    "  sonorelle analyse --json *.wav > songs.jsonl\n"
    "  sonorelle analyse song.wav --picture song.svg --csv-file song.csv";

inline constexpr const char* kArrangeDescription =
    "Finds chords and harmony voices for each recording, and writes the sung arrangement as WAV files,\n"
    "its notes as MIDI files, and a picture.";
inline constexpr const char* kArrangeFooter =
    "For song.wav it writes Out_song.wav (all voices, 16-bit stereo at the recording's\n"
    "rate), with --stems one such file a voice (Out_song_orange.wav, _red, _blue,\n"
    "_green), Out_song.mid (all voices, each on a channel of its own),\n"
    "Out_song_chords.mid (in the intelligent styles) and Out_song.svg (the voices in\n"
    "their colours, the pitch curve, the chords). What was there of these names is\n"
    "replaced; what this run does not write is left as it was.\n"
    "\n"
    "--voice sets the strip of one voice: 0 to 3, or orange (the melody), red, blue,\n"
    "green; a colon; then any of these, with commas between them:\n"
    "  vol=0 to 1.333   loudness; 1: as sung\n"
    "  pan=-1 to 1      place, left to right\n"
    "  delay=0 to 100   milliseconds\n"
    "  shape=-8 to 8    shift of the formants, semitones\n"
    "  tune=0 to 100    pitch correction, per cent\n"
    "  drift=0 to 200   pitch variation, per cent of what was sung\n"
    "  glide=0 to 100   smoothness from note to note, per cent\n"
    "  time=0 to 100    human timing, per cent\n"
    "  mute             is not heard\n"
    "  solo             is heard alone, muted or not; the last solo counts\n"
    "It may be given several times; what is set last counts. Whatever the order, the\n"
    "strips first stand as --preset says: 'default' puts the voices in their places,\n"
    "'flat' leaves every voice at full level in the middle.\n"
    "\n"
    "Names may be written in any case and cut short as long as they are clear:\n"
    "--style block --arrangement \"drop2 int\". 'sonorelle arrange --list' prints them\n"
    "all with their numbers.\n"
    "\n"
    "--speed 2 sings twice as fast: the sound and the MIDI notes last half as long,\n"
    "at the same pitch. The picture and JSON keep to the time of the recording.\n"
    "\n"
    "--save-state leaves the whole session in a file, as a sequencer keeps it in its\n"
    "project; --state takes it up again. Options given with --state change what the\n"
    "session says. Its recording is looked for where it was; a FILE of the same name\n"
    "stands in for one that has moved. A program (--save-program, --program) is the\n"
    "strips alone.\n"
    "\n"
    "--midi-in plays keys along with the region, its time 0 being that of the\n"
    "recording: --live harmonies sings the melody in held chords, pitches gives each\n"
    "voice a held key, trigger plays the region or a snapshot with its key. With\n"
    "--record what was played stays in MIDI, JSON and state.\n"
    "\n"
    "JSON is one object a recording, each on a line of its own; its pitches are those\n"
    "before transposing.\n"
    "\n"
    "Exit codes: 0 done; 1 a recording failed (the others were done); 2 wrong use;\n"
    "130 cancelled by Ctrl-C, and the recording in work leaves nothing behind.\n"
    "\n"
    "Examples:\n"
    "  sonorelle arrange song.wav -o out\n"
    "  sonorelle arrange song.wav --style organum --arrangement \"octave around\"\n"
    "  sonorelle arrange song.wav --root Eb --scale \"harmonic minor\" --range 0\n"
    "  sonorelle arrange song.wav --style \"parallel manual 4\" --intervals 0,2,4,-7\n"
    "  sonorelle arrange song.wav --stems --voice red:vol=0.7,pan=-0.5 --voice 3:mute";

inline constexpr const char* kSessionDescription = "Leads a session without a window: loads, sets, edits, "
                                                   "plays, saves and exports by the lines of a script.";
inline constexpr const char* kSessionFooter =
    "A script has one command a line. What stands behind a # is a comment; names with\n"
    "blanks stand in quotation marks. The first line that fails ends the run.\n"
    "'sonorelle session --list' prints the commands:\n"
    "\n"
    "  load song.wav\n"
    "  set style block\n"
    "  voice red vol=0.7 pan=-0.5\n"
    "  snapshot add \"Verse 1\" 62\n"
    "  export audio out.wav\n"
    "  state save song.state\n"
    "\n"
    "Exit codes: 0 done; 1 a line failed (those before it were done); 2 wrong use; 130\n"
    "cancelled by Ctrl-C.";

} // namespace sonorelle
