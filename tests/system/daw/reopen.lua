-- SPDX-License-Identifier: AGPL-3.0-or-later
-- Opens the session of the job again, writes down what Ardour knows of the plug-in, and saves it.
local job = dofile (os.getenv ("KESTRIN_JOB"))

local backend = AudioEngine:set_backend ("None (Dummy)", "", "")
assert (backend and not backend:isnil (), "Ardour has no dummy backend")

local session = assert (load_session (job.folder, job.name), "Ardour does not load the session")
local insert = session:route_by_name ("Kestrin"):nth_plugin (0)
local plugin = insert:to_insert ():plugin (0)
local report = assert (io.open (job.report, "w"))

for index = 0, plugin:parameter_count () - 1 do
	local _, results = plugin:get_parameter_descriptor (index, ARDOUR.ParameterDescriptor ())
	local descriptor = results[2]
	report:write (string.format (
		"%d\t%s\t%.9g\t%.9g\t%.9g\t%.9g\n", index, descriptor.label, descriptor.lower, descriptor.upper,
		descriptor.normal, ARDOUR.LuaAPI.get_processor_param (insert, index)))
end

report:close ()
assert (session:save_state ("", false, false, false, false, false) == 0, "Ardour does not save the session")
close_session ()
print ("kestrin: done")
