-- SPDX-License-Identifier: AGPL-3.0-or-later
-- Makes a session of one track as the job says: a silent sound, the plug-in behind it, positions and automation. The job is
-- a Lua table in the file that KESTRIN_JOB names.
local job = dofile (os.getenv ("KESTRIN_JOB"))

local backend = AudioEngine:set_backend ("None (Dummy)", "", "")
assert (backend and not backend:isnil (), "Ardour has no dummy backend")
backend:set_device_name ("Silence")

local session = assert (create_session (job.folder, job.name, job.rate), "Ardour makes no session")

-- Ardour's own fades at the edges of a sound.
session:cfg ():set_use_region_fades (false)
session:cfg ():set_use_transport_fades (false)

local tracks = session:new_audio_track (
	job.channels, job.channels, nil, 1, "Kestrin",
	ARDOUR.PresentationInfo.max_order, ARDOUR.TrackMode.Normal, true, false)

for route in tracks:iter () do
	-- Ardour's scripts cannot import a sound. Bouncing an empty track makes one of the right length in a file of its own,
	-- which is then written over.
	local track = route:to_track ()
	local region = track:bounce_range (0, job.frames, ARDOUR.InterThreadInfo (), ARDOUR.LuaAPI.nil_proc (), false, "sound")
	assert (not region:isnil (), "Ardour bounces nothing")
	region:to_audioregion ():set_fade_in_active (false)
	region:to_audioregion ():set_fade_out_active (false)
	track:playlist ():add_region (region, Temporal.timepos_t (0), 1, false, 0, 0, false)

	-- Another thread of Ardour's connects the track to the master, in its own time.
	for _ = 1, 1000 do
		if route:output ():nth (0):connected () then break end
		ARDOUR.LuaAPI.usleep (10000)
	end
	assert (route:output ():nth (0):connected (), "Ardour does not connect the track")

	if job.plugin then
		local plugin = ARDOUR.LuaAPI.new_plugin (session, job.plugin, ARDOUR.PluginType.VST3, "")
		assert (not plugin:isnil (), "Ardour does not know the plug-in")
		assert (route:add_processor_by_index (plugin, 0, nil, true) == 0, "Ardour does not take the plug-in")

		for index, position in pairs (job.positions) do
			assert (ARDOUR.LuaAPI.set_processor_param (plugin, index, position), "Ardour does not set parameter " .. index)
		end

		for index, points in pairs (job.lanes) do
			local _, list = ARDOUR.LuaAPI.plugin_automation (plugin, index)

			for _, point in ipairs (points) do
				list:add (Temporal.timepos_t (point[1]), point[2], false, true)
			end

			local parameter = Evoral.Parameter (ARDOUR.AutomationType.PluginAutomation, 0, index)
			plugin:to_automatable ():automation_control (parameter, false):set_automation_state (ARDOUR.AutoState.Play)
		end

		if job.bypassed then
			plugin:to_insert ():enable (false)
		end
	end
end

assert (session:save_state ("", false, false, false, false, false) == 0, "Ardour does not save the session")
close_session ()
print ("kestrin: done")
