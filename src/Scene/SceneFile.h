// The scene file format (.vsc) and the object file format (.vob): ids, the state a load
// shares with the readers of every kind, and the pieces of the frame those readers use.
//
// A file is a flat chain of blocks, each an 8-byte header (id, size) and a payload: the
// version record first, then tool blocks (tool box tools, then the root's children), the
// element block, and the blocks of the interface, camera, shader layers, common includes
// and animation (the last five only in scenes). From version 20170421 a size counts its
// header. Scene::saveN, saveNO and load (SceneFile.cpp) write and read the frame.
#pragma once

#include "Math/Matrix3.h"
#include "Math/Matrix34.h"
#include "Math/Vector3.h"

#include <istream>
#include <memory>
#include <ostream>
#include <set>
#include <sstream>

namespace vel {

class Element;
class IFile;
struct Pbr;

// ---- block ids ----
constexpr unsigned VERSION_DATA = 0xFFFFAAAAu; // its second word is the version, not a size
constexpr unsigned TOOL_BLOCK = 0xABCDEF01u;
constexpr unsigned TOOLBOX_BLOCK_FIRST = 0x10000001u; // to 0x10000005: tool boxes and the tools panel
constexpr unsigned TOOLBOX_BLOCK_LAST = 0x10000005u;
constexpr unsigned TOOLS_PANEL_BLOCK = 0x10000002u;
constexpr unsigned ELEMENTS_BLOCK = 0xEEEEEEEEu;
constexpr unsigned GUI_BLOCK = 0x99999999u;
constexpr unsigned CAMERA_BLOCK = 0xA9999999u;
constexpr unsigned SHADER_LAYERS_BLOCK = 0x20000000u;
constexpr unsigned INCLUDE_COMMON_BLOCK = 0x20000005u;
constexpr unsigned ANIMATION_BLOCK = 0xB9999999u;

// ---- tool record tags ----
constexpr unsigned TOOL_DATA = 0xABCDEF02u;
constexpr unsigned ARRAY_DATA = 0xABCDEF04u;
constexpr unsigned BITOOL_DATA = 0xABCDEF05u;
constexpr unsigned ENDER_DATA = 0xABCDEF07u;
constexpr unsigned SNAKE_DATA = 0xABCDEF08u;
constexpr unsigned BONE_DATA = 0xABCDEF09u;
constexpr unsigned GEAR_DATA = 0xABCDEF0Au;
constexpr unsigned RIGID_BODY_DATA = 0xABCDEF10u;
constexpr unsigned CONSTRAINT_P2P_DATA = 0xABCDEF11u;
constexpr unsigned SDF_DATA = 0xABCDEF20u;

constexpr int FILE_VERSION_CURRENT = 20230711; // what the writer writes; the newest read
constexpr int SIZE_COUNTS_HEADER = 20170421;   // from here on a size includes its 8 bytes
constexpr int MATRIX_DOUBLES_AFTER = 20180605; // record matrices: 16 floats up to here
constexpr int TOOLBOX_MATRIX_DOUBLES = 20181221; // tool box matrices: 16 floats before here
constexpr int CAMERA_STRAY_BYTES = 20230528;   // that version wrote 4 bytes after the radius

// ---- state of the load in progress; written by the loading worker only ----
extern int FILE_VERSION;        // of the file being read; stays set after a load
extern bool FILE_LOAD_ERROR;    // an element tag was not recognised
extern bool FILE_OLD;           // a file of version 0 is of the oldest generation
extern bool gOldLoadedElement;  // the element just read came in an obsolete form
extern std::set<Element*> gModifiedLoadedElements; // repaired while loading; emptied around a load
// The payloads of the blocks the main thread takes apart after a load; null when absent.
extern std::unique_ptr<std::stringstream> gGuiBuf;
extern std::unique_ptr<std::stringstream> gCameraBuf;
extern std::unique_ptr<std::stringstream> gAnimationBuf;
extern std::unique_ptr<std::stringstream> gShaderLayersBuf;
extern std::unique_ptr<std::stringstream> gIncludeCommonBuf;
void gDeleteLoadBuffers();

// The payload size of a block or record header in a file of `version`.
inline long long PayloadSize(unsigned size, int version)
{
    return version >= SIZE_COUNTS_HEADER ? (long long)size - 8 : (long long)size;
}

// A matrix of the file: 12 doubles, or 16 floats (by columns; by rows before 20161026).
bool ReadFileMatrix(IFile& in, bool doubles, int version, Matrix34<double>& M);
// A Pbr of the file: 16 bytes from 20211202; before, four 16-bit colour channels, four of
// light, a short metal and a short rough (20 bytes).
bool ReadFilePbr(IFile& in, int version, Pbr& pbr);

// Reads one element record (tag, size, fields) of the element block. Null at the end of the
// stream, for a tag of an obsolete or skipped kind, and for a record that could not be read;
// an unknown tag also sets FILE_LOAD_ERROR and is logged.
Element* DataReadElement(IFile& in);

// The camera block: the view as it was saved, in a plain record until the viewport's camera
// takes it over.
struct CameraState {
    Vector3<double> centre;   // of the scene's last fit
    double radius = 1;        // of the scene's last fit
    Vector3<double> position; // of the view's camera
    Matrix3<double> rotation; // of the view's camera
    double distance = 1;      // from the camera to its pivot

    void write(std::ostream& out) const; // 136 bytes
    // False, and nothing changed, on a short block.
    bool read(std::istream& in, int version);
};

// What the layers above the model put into a scene file; installed by them, null until then.
extern bool (*gSaveCamera)(CameraState& camera); // false: no view to save, the scene's fit goes
extern void (*gSaveGui)(std::ostream& out);      // the user interface block's payload
// The shader layers block's and the common includes block's payloads; null writes them empty.
extern void (*gSaveShaderLayers)(std::ostream& out);
extern void (*gSaveIncludeCommon)(std::ostream& out);

} // namespace vel
