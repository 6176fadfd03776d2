// The configuration file "vellumbra.xml": frame cap, camera kind, interface scale, render
// quality, the last folders, recent files and asset folders. Read once at start, written at
// close and after file operations. Model-level: no GL, no widgets, so it is testable alone.
//
// The file is outside data: a missing file is silent (the defaults stand); a broken,
// truncated or oversized one is reported through the log and changes nothing; a value out of
// its range is reported and leaves its setting as it was.
#pragma once

#include <deque>
#include <string>

namespace vel {

extern std::string CONFIG_FILE; // "vellumbra.xml", relative to the working folder

// Part of the frame loop: the repaint timer runs at FPS_MAX while CAP_FPS holds.
extern bool CAP_FPS;
extern float FPS_MAX;

extern int CAMERA_TYPE;      // camera kind of the main view: 0 or 1
extern bool UI_SCALE_AUTO;   // multiply the interface scale by the screen's own
extern float UI_SCALE;       // the interface framebuffer's size over the device size, in [1/3, 1]
extern int SDF_ITERATIONS;   // ray-march steps of the SDF pass
extern int SSR_RAYS;         // rays of screen-space reflections: Rendering::ssrRays at load and save

extern std::string OPEN_SCENE_PATH;
extern std::string OPEN_OBJECT_PATH;
extern std::string OPEN_TEXTURE_PATH;
extern std::string OPEN_GLSL_INCLUDE_PATH;
extern std::string OPEN_ALPHA_PATH;
extern std::string OPEN_SHADER_PRE_PATH;
extern std::string OPEN_SHADER_POST_PATH;
extern std::string OPEN_SHADER_FINAL_PATH;
extern std::string OPEN_OBJECT_SHADER_PATH;
extern std::string OPEN_RENDER_IMAGE_PATH;
extern std::string INSTANT_MESHES_PATH;

extern std::deque<std::string> RECENT_FILES; // newest first, at most RECENT_FILES_MAX
extern std::deque<std::string> ASSET_FOLDERS;

constexpr int RECENT_FILES_MAX = 8;
constexpr int CONFIG_VERSION = 20230711;
constexpr long CONFIG_BYTES_MAX = 1 << 20; // a larger file is not a configuration

// Reads CONFIG_FILE; silent when it cannot be opened.
void LoadConfigFile();
// Applies the document `text`; `name` is for messages. False (and nothing changed) when the
// text is not a configuration.
bool ReadConfigText(std::string const& text, std::string const& name);
// The document of the settings of the moment.
std::string ConfigText();
// Writes ConfigText() to CONFIG_FILE; false (with a log line) when it cannot be written.
bool SaveConfigFile();

// Moves or puts `path` at the front of RECENT_FILES, dropping the oldest past the maximum.
void AddRecentFile(std::string const& path);

// The interface scale that a stored "value" asks for: 1 below 1, 1/3 above 3, else 1 / v.
float UIScaleFromValue(float value);

} // namespace vel
