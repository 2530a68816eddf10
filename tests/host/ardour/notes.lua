ardour {
  ["type"] = "dsp",
  name = "Vantoric test notes",
  category = "Instrument",
  license = "GPLv3",
  author = "Vantoric",
  description = [[A chord for the first half of every second, locked to the transport]]
}

local chord = { 48, 55, 60, 64 }
local rate = 48000

function dsp_ioconfig () return { { midi_in = 1, midi_out = 1, audio_in = 0, audio_out = 0 } } end
function dsp_params () return {} end
function dsp_init (samplerate) rate = samplerate end

-- One event for each key of the chord, `at` samples into the block.
local function send (at, status, velocity)
  for i, key in ipairs (chord) do
    midiout[i] = { time = at + 1, data = { status, key, velocity } }
  end
end

function dsp_run (_, _, count)
  if not Session:transport_rolling () then return end
  local half = math.floor (rate / 2)
  local position = Session:transport_sample ()
  local at = (half - position % half) % half
  if at >= count then return end
  local even = math.floor ((position + at) / half) % 2 == 0
  if even then send (at, 0x90, 100) else send (at, 0x80, 64) end
end
