// Snake: bends its item along its axis curve on the graphics card, without changing the
// item. The axis' vertex frames are the bones (Curve::buildGPUVertsFrames); the item
// element's snake shader places instance i between bones i * InstancesMul and the next.
//
// Items mode: 0 one item stretched over the whole axis, 1 one item per segment, any other
// value the user's count spread evenly. The item is drawn only through the snake: it is not
// listed for drawing on its own.
#pragma once

#include "Scene/Tools/Array/ToolItemAxis.h"

#include <deque>

namespace vel {

class IFile;

class Snake : public ToolItemAxis {
public:
    Matrix34<double> oddMatrix;    // applied to every odd instance, as in Array
    unsigned char snakeType = 0;
    unsigned char itemsMode = 1;
    int itemsCount = 1;

    Snake(Shared<Element> const& axis, int type, int mode, Matrix34<double> const& odd = Matrix34<double>(),
          Matrix34<double> const& object = Matrix34<double>(), Matrix34<double> const& pivot = Matrix34<double>(),
          Material const& material = Material());
    Snake(IFile& in, int payload);

    int ToolType() const override { return 4; }
    Element* RenderElement() const override;
    Tool* SimpleClone(bool asObject, Matrix34<double> const& object, Matrix34<double> const& pivot) override;
    bool isGroup() const override { return false; }
    Shader* renderShader(Element* e, TRenderState const& state) override;
    // Builds the bones, binds them and sets the snake uniforms; false draws nothing.
    bool renderBegin(Element* e, TRenderState const& state) override;
    void render(Element* e, TRenderState const& state, Matrix34<double> const& M, Matrix34<double> const& pivot,
                int objectId, int items, int elementId, int fourth) override;
    void prepareRender(Element* e) override;
    // The bend of the shader on the processor, in double precision: one new mesh object per
    // instance under a group that replaces the snake. Empty when nothing would be drawn or
    // the item does not convert to a mesh.
    std::deque<Tool*> Explode() override;

    // The count of the draw after the mode's rule, and the multiplier of the shader; false
    // when the axis has fewer than two frames.
    bool instancing(int& instances, float& multiplier);
    bool closedAxis() const;

    int DataSize() const override;
    void Data(OFile& out, std::unordered_map<Element*, int>& ids) override;
    void DataWrite(OFile& out, std::unordered_map<Element*, int>& ids) override;
    bool DataRead(IFile& in, int payload) override;

private:
    bool bonesBound = false; // the bones texture is enabled between renderBegin and the draw's end
};

} // namespace vel
