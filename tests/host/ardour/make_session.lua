-- ardour-lua make_session.lua SCRIPTS FOLDER TYPE PLUGIN [PARAMETER VALUE]: a new session "check" with the instrument on a
-- track and a source of notes before it; sets one parameter, if it is told, tells what it then is, and saves. TYPE is LXVST, LV2
-- or VST3; PLUGIN its name, or the URI of an LV2 plug-in.
dofile (arg[1] .. "/common.lua")
local folder, name, parameter, value = arg[2], arg[4], tonumber (arg[5]), tonumber (arg[6])

start_backend ()
local session = create_session (folder, "check", 48000)
assert (session, "no session")
local info = ARDOUR.LuaAPI.new_plugin_info (name, ARDOUR.PluginType[arg[3]])
assert (not info:isnil (), "not in the list of plug-ins: " .. name)
local track = session:new_midi_track (ARDOUR.ChanCount (ARDOUR.DataType ("midi"), 1),
  ARDOUR.ChanCount (ARDOUR.DataType ("audio"), 2), false, info, nil, nil, 1, "instrument",
  ARDOUR.PresentationInfo.max_order, ARDOUR.TrackMode.Normal, true):front ()
local notes = ARDOUR.LuaAPI.new_luaproc (session, "Vantoric test notes")
assert (not notes:isnil (), "no source of notes")
track:add_processor_by_index (notes, 0, nil, true)

if parameter then
  local processor, insert = find_plugin (session, name)
  assert (processor, "the plug-in is not on its track")
  print ("parameters", insert:plugin (0):parameter_count ())
  assert (ARDOUR.LuaAPI.set_processor_param (processor, parameter, value), "the parameter was not set")
  print ("value", string.format ("%.6f", (ARDOUR.LuaAPI.get_processor_param (processor, parameter))))
end
session:save_state ("")
print ("made")
io.stdout:flush ()
close_session ()
quit ()
