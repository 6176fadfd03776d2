// ChunkedSequence: records keep their address and value while the sequence grows, copies and
// truncations keep the values, and memory follows the size: small meshes and their copies
// cost little.
#include "Scene/Elements/Mesh/ChunkedSequence.h"

#include "MeshFixtures.h"

#include <gtest/gtest.h>

namespace vel {
namespace {

using Sequence = ChunkedSequence<int>;

TEST(ChunkedSequence, RecordsKeepAddressAndValueAcrossGrowthCopyAndTruncation)
{
    // Sizes on both sides of each chunk boundary, small and large chunks alike.
    for (std::size_t n : {1u, 15u, 16u, 17u, 48u, 49u, 8175u, 16368u, 16369u, 32752u, 40000u}) {
        SCOPED_TRACE(n);
        Sequence s;
        s.push_back(0);
        int* first = &s[0];
        for (std::size_t i = 1; i < n; ++i)
            s.push_back(int(i));
        EXPECT_EQ(&s[0], first);
        Sequence copy = s;
        s.resize(n + 20, -1);
        EXPECT_EQ(&s[0], first);
        for (std::size_t i = 0; i < n + 20; ++i)
            ASSERT_EQ(s[i], i < n ? int(i) : -1) << i;
        ASSERT_EQ(copy.size(), n);
        for (std::size_t i = 0; i < n; ++i)
            ASSERT_EQ(copy[i], int(i)) << i;
        copy.resize(n / 2);
        copy.resize(n, 7);
        for (std::size_t i = 0; i < n; ++i)
            ASSERT_EQ(copy[i], i < n / 2 ? int(i) : 7) << i;
        // Memory follows the size: a few times what is used at most, even for one record.
        EXPECT_LE(copy.capacityBytes(), (3 * n + 16) * sizeof(int));
        EXPECT_GE(copy.capacityBytes(), n * sizeof(int));
    }
}

TEST(ChunkedSequence, ASmallMeshAndItsCloneCostInProportion)
{
    auto quad = test::BuildMesh({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}}, {{0, 1, 2, 3}});
    std::unique_ptr<Mesh> clone(quad->clone());
    for (Mesh const* m : {quad.get(), clone.get()}) {
        std::size_t bytes = m->verts.capacityBytes() + m->edges.capacityBytes() + m->faces.capacityBytes() +
                            m->materials.capacityBytes() + m->uvs.capacityBytes();
        EXPECT_LE(bytes, 1024u);
    }
}

} // namespace
} // namespace vel
