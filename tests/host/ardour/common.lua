-- What both scripts need: the dummy backend, and the plug-in in a session.
function start_backend ()
  local backend = AudioEngine:set_backend ("None (Dummy)", "", "")
  backend:set_sample_rate (48000)
  backend:set_buffer_size (256)
end

-- The first processor of any track that is a plug-in called `name`, or nil.
function find_plugin (session, name)
  for route in session:get_routes ():iter () do
    local i = 0
    while true do
      local processor = route:nth_processor (i)
      if processor:isnil () then break end
      local insert = processor:to_insert ()
      if not insert:isnil () and insert:plugin (0):name () == name then return processor, insert end
      i = i + 1
    end
  end
end
