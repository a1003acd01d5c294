-- SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
--
-- A handler for SWUpdate: an image of type "m7-cpld" is a sealed command file, which m7-cpld-update
-- downloads to the board's chain. Its percent become SWUpdate's, its words go to SWUpdate's log, and
-- SWUpdate fails where the download does.
--
-- Put this file where SWUpdate's Lua looks, as /usr/share/lua/5.3, and name it in swupdate_handlers.lua
-- there, which SWUpdate loads when it starts:
--   require("m7_cpld_handler")
require("swupdate")

-- In single quotes for the shell.
local function quote(text)
  return "'" .. text:gsub("'", "'\\''") .. "'"
end

-- The text of a JSON string's inside.
local function unescape(text)
  return (text:gsub('\\(.)', { n = "\n", t = "\t" }))
end

-- What a line of the download means to SWUpdate.
local function pass_on(line)
  local percent = line:match('^{"event":"%a+","file":.-,"percent":(%d+)')
  local kind, place, text =
    line:match('^{"event":"message","kind":"(.-)","place":"(.-)","text":"(.*)"}$')
  if percent then
    swupdate.progress_update(tonumber(percent))
  elseif text then
    local tell = kind == "error" and swupdate.error or swupdate.info
    tell(unescape(place ~= "" and place .. ": " .. text or text))
  elseif line:sub(1, 1) ~= "{" then
    swupdate.info(line)
  end
end

-- Whether the command succeeds; each line of what it prints is passed on.
local function run(command)
  local pipe = io.popen(command .. " 2>&1")
  for line in pipe:lines() do
    pass_on(line)
  end
  local _, how, code = pipe:close()
  if how == "exit" and code == 0 then
    return true
  end
  swupdate.error(("m7-cpld-update ended by %s %d"):format(how, code))
  return false
end

local function install(image)
  -- The file of that name in the folder above is SWUpdate's own.
  local path = swupdate.tmpdirscripts() .. image.filename
  local failed, why = image:copy2file(path)
  if failed ~= 0 then
    swupdate.error(why)
    return 1
  end
  local done = run("m7-cpld-update --json begin " .. quote(path))
  os.remove(path)
  return done and 0 or 1
end

swupdate.register_handler("m7-cpld", install, swupdate.HANDLER_MASK.IMAGE_HANDLER)
