-- ardour-lua ardour_render.lua SCRIPTS FOLDER PLUGIN TYPE: a new session "check" with the instrument on a track and a source of
-- notes before it. TYPE is LXVST, LV2 or VST3; PLUGIN its name, or the URI of an LV2 plug-in.
dofile (arg[1] .. "/common.lua")
start_backend ()
local session = create_session (arg[2], "check", 48000)
assert (session, "no session")
local info = ARDOUR.LuaAPI.new_plugin_info (arg[3], ARDOUR.PluginType[arg[4]])
assert (not info:isnil (), "not in the list of plug-ins: " .. arg[3])
local track = session:new_midi_track (ARDOUR.ChanCount (ARDOUR.DataType ("midi"), 1),
  ARDOUR.ChanCount (ARDOUR.DataType ("audio"), 2), false, info, nil, nil, 1, "instrument",
  ARDOUR.PresentationInfo.max_order, ARDOUR.TrackMode.Normal, true):front ()
local notes = ARDOUR.LuaAPI.new_luaproc (session, "Vantoric test notes")
assert (not notes:isnil (), "no source of notes")
track:add_processor_by_index (notes, 0, nil, true)
session:save_state ("")
print ("made")
io.stdout:flush ()
close_session ()
quit ()
