// Communicate: the signal hub through which every subsystem reaches the shell without
// knowing it, and through which worker threads reach the main thread.
//
// Logging, the requests that reach the main window and the GL widget, and the signals by
// which the scene, the history and the tool boxes keep the interface up to date. Connections
// to the window and the widget are automatic, so a worker's signal arrives queued on the
// main thread; the few direct functors run on the emitting thread.
// Log levels: 0 information, 1 warning, 2 error.
// `quiet` swallows the next message only, so a caller can silence one rebuild at a time.
#pragma once

#include "Memory/Singleton.h"

#include <QObject>
#include <QString>

#include <string>

namespace vel {

struct Material;

class Communicate : public QObject, public Singleton<Communicate> {
    Q_OBJECT
public:
    bool quiet = false; // one-shot: the next message is swallowed and the flag cleared

    // The single entry for user-level messages: honours `quiet`, else emits LogInfo.
    void message(QString const& text, int type);

    // " i  ", "[w] " or "[e] ": the prefix a log line of that level starts with.
    static QString LogPrefix(int type);

    // The log text after `text` of level `type` arrives: the newest entry stands first.
    static QString PrependLogEntry(QString const& log, QString const& text, int type);

signals:
    void LogInfo(QString const& text, int type);

    // History: the newest entry was destroyed; the oldest left for the budget; an entry
    // was added; a group changed; the interface should drop its last entry.
    void historyPop();
    void historyPopFront();
    void historyUpdate();
    void historyGroup(int index);
    void UndoPop();

    // ---- to the main window
    void ShowWindow();
    void StartScene(int item, bool ask);
    void NewScene();
    void OpenScene();
    void SaveScene();
    void SaveAsScene();
    void RenderToFile();
    void OpenFile(std::string const& path, bool append);
    void tool_load(void* view);
    void DoneThread(void* result, int kind);
    void AddCustomTools();
    void AddAssets();
    void RefreshCustomTools();
    void RefreshAssets();
    void ClearCustomTools();
    void ClearAssets();
    void CommonDelete(int index);
    void KeyframeDelete(int index);
    void ShaderLayerLoad(int group, int index);
    void ShaderLayerSave(int group, int index);
    void ShaderLayerDelete(int group, int index);
    void ShaderLayerMoveUp(int group, int index, bool all);
    void ShaderLayerMoveDown(int group, int index, bool all);
    void ObjectShaderLoad(void* tool);
    void ObjectShaderSave(void* tool);
    void TexturesOpen();
    void IncludesOpen();

    // ---- to the GL widget
    void openMenu(void* tool);
    void changeMaterialObjects(void* tool);
    void sendMaterial(Material const& material, int mask);
    void tool_material(void* view);
    void reset_ui();

    // ---- direct functors
    void LockBrushSize();
    void signalUpdateViews();
    void trace_mode(bool on);
    void turntable(bool on);
    void BlockAllActions(bool block, std::string const& name);
    void unpick();

    // ---- to the panels of the interface
    void SetBrushProperties();
    void SetRenderStyle(int style);
    void signalClosePopup();
    void sendMask(int mask);
    void sendFloat(float value);
    void pick(int id);
    void updateToolDrawing();
    void setArrayType(int type);
    void beginProgress(QString const& title, int steps);
    void setProgress(int step);
    void setMaterial(Material const& material);
    void changeRotationMultiplierObjects(float value);
    void sendIntValue(int value);
    void ArrayType(int type);
    void LogPopup(QString const& text);
    void SendStrings(std::string const& first, std::string const& second);
    void UpdateUIBrushSize(float value);
    void UpdateUIBrushStrength(float value);
    void UpdateUIBrushFalloff(float value);
    void UpdateUIBrushElevation(float value);
    void OpenHttp(QString const& address);
};

// Shorthand for Communicate::instance().message(text, type).
void LogInfo(QString const& text, int type);

} // namespace vel
