-- Makes an Ardour session with the plug-in on the track `Singer`, and a track `Take` that records its left side:
--
--     ardour7-lua ardour_make.lua FOLDER NAME RATE
local folder, name, rate = arg[1], arg[2], tonumber(arg[3])

local function check(what, good)
    if not good then
        io.stderr:write("trouble: ", what, "\n")
        os.exit(1)
    end
end

check("there is no dummy backend", not AudioEngine:set_backend("None (Dummy)", "", ""):isnil())
AudioEngine:set_sample_rate(rate)
AudioEngine:set_buffer_size(512)
local session = create_session(folder, name, rate)
check("no session", session ~= nil)

local plugin = ARDOUR.LuaAPI.new_plugin_info("sonorelle", ARDOUR.PluginType.LXVST)
check("the plug-in is not in Ardour's list", not plugin:isnil())
local midi = ARDOUR.ChanCount(ARDOUR.DataType("midi"), 1)
local stereo = ARDOUR.ChanCount(ARDOUR.DataType("audio"), 2)
local last = ARDOUR.PresentationInfo.max_order
local singers =
    session:new_midi_track(midi, stereo, false, plugin, nil, nil, 1, "Singer", last, ARDOUR.TrackMode.Normal, true)
check("no track for the plug-in", singers:size() == 1)
local singer = singers:front()
check("the plug-in is not on its track", not singer:the_instrument():isnil())

-- Ten outputs would otherwise be spread over ten places.
singer:panner_shell():set_bypassed(true)

local takes = session:new_audio_track(1, 2, nil, 1, "Take", last, ARDOUR.TrackMode.Normal, true, false)
check("no track to record on", takes:size() == 1)
local take = takes:front()
take:input():audio(0):disconnect_all()
take:input():audio(0):connect(singer:output():audio(0):name())
for side = 0, 1 do -- the singer is heard once
    take:output():audio(side):disconnect_all()
end

session:save_state("")
close_session()
quit()
