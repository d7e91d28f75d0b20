#include "core/exports.h"

#include <stdexcept>
#include <vector>

namespace kernelgen {

namespace {

struct Row {
    const char* name;
    int size;
    const char* group;
};

const std::vector<Row>& rows()
{
    static const std::vector<Row> all = {
#define TVKG_EXPORT(shape, name, type, size, group) {#name, size, #group},
#include "tvkgen_exports.inc"
    };
    return all;
}

} // namespace

std::string listedKernel(const std::string& group, int size)
{
    for (const Row& row : rows())
        if (row.size == size && group == row.group && group != row.name)
            return row.name;
    throw std::invalid_argument("no listed kernel of size " + std::to_string(size) + " in " + group);
}

} // namespace kernelgen
