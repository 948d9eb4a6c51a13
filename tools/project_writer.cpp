#include "tools/project_writer.h"

#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <vector>

#include "core/integer.h"
#include "curve/field.h"
#include "curve/point.h"
#include "curve/random_scalar.h"
#include "curve/sect163r2.h"
#include "project/project_key_record.h"

namespace {

using Bytes = std::vector<std::uint8_t>;
using Stream = std::unique_ptr<std::FILE, decltype(&std::fclose)>;

void append(Bytes& bytes, const void* data, std::size_t size) {
    bytes.resize(bytes.size() + size);
    std::memcpy(bytes.data() + bytes.size() - size, data, size);
}

void append32(Bytes& bytes, std::uint64_t value) {
    const auto word = static_cast<std::uint32_t>(value);
    append(bytes, &word, sizeof word);
}

/// The stored form of an element: its degree, four zero bytes, its bits in 32-bit words.
Bytes storedElement(const core::FieldElement& e) {
    Bytes bytes;
    append32(bytes, e.degree);
    append32(bytes, 0);
    append(bytes, e.words.data(), (e.degree + 31) / 32 * sizeof(std::uint32_t));
    return bytes;
}

/// The stored form of a scalar: its bit length and its bytes.
Bytes storedScalar(const core::FieldElement& k) {
    core::CoreInteger scalar{.capacity = core::integerLimbRoom};
    core::fieldToInteger(k, scalar);
    core::integerNormalise(scalar);
    Bytes bytes;
    append32(bytes, core::integerBitLength(scalar));
    append(bytes, scalar.limbs.data(), core::integerByteLength(scalar));
    return bytes;
}

/// Header, directory and values, the header of an empty project for now.
Bytes projectImage(const ProjectFile& project) {
    constexpr std::size_t headerSize = sizeof(ProjectFileHeader);
    constexpr std::size_t entrySize = 12;
    std::vector<ProjectAttributeId> ids = project.attributeIds();
    std::sort(ids.begin(), ids.end());

    Bytes image(headerSize);
    std::size_t offset = headerSize + entrySize * ids.size();
    for (const ProjectAttributeId id : ids) {
        append32(image, id);
        append32(image, offset);
        append32(image, project.attributeSize(id));
        offset += project.attributeSize(id);
    }
    for (const ProjectAttributeId id : ids) {
        const Bytes value = project.getBytes(id);
        append(image, value.data(), value.size());
    }
    return image;
}

bool writeImage(const ProjectFile& project, std::FILE* stream) {
    const Bytes image = projectImage(project);
    return std::fwrite(image.data(), image.size(), 1, stream) == 1 && project.sealHeader(stream) &&
           std::fflush(stream) == 0 && ::fsync(::fileno(stream)) == 0;
}

std::string failure(const std::string& path) {
    return path + ": " + std::strerror(errno);
}

}  // namespace

ProjectFile newProject() {
    const core::CurveDomain& curve = core::sect163r2.domain;
    const core::CurveCoefficients coefficients{curve.coefficientA, curve.coefficientB};
    const core::FieldTemporary k(core::fieldNew(curve.degree));
    core::PointTemporary base(curve.degree);
    core::PointTemporary publicPoint(curve.degree);

    // The order is prime, so every multiple of the published base point but infinity has that
    // order.
    core::drawScalar(*k, curve.order);
    core::pointMultiply(*k, curve.basePoint, coefficients, *base, curve.reductionPolynomial);
    core::drawScalar(*k, curve.order);
    core::pointMultiply(*k, *base, coefficients, *publicPoint, curve.reductionPolynomial);

    ProjectFile project;
    project.insertAttribute(basePointXAttribute, storedElement(*base->x));
    project.insertAttribute(basePointYAttribute, storedElement(*base->y));
    project.insertAttribute(privateScalarAttribute, storedScalar(*k));
    project.insertAttribute(publicPointXAttribute, storedElement(*publicPoint->x));
    project.insertAttribute(publicPointYAttribute, storedElement(*publicPoint->y));
    return project;
}

std::optional<std::string> writeProjectFile(const ProjectFile& project, const std::string& path) {
    std::string temporary = path + ".XXXXXX";
    const int descriptor = ::mkostemp(temporary.data(), O_CLOEXEC);  // mode 0600
    if (descriptor == -1) {
        return failure(path);
    }
    Stream stream(::fdopen(descriptor, "w+b"), &std::fclose);
    bool written = stream != nullptr && writeImage(project, stream.get());
    // RENAME_NOREPLACE: the target must not exist.
    written = written && ::renameat2(AT_FDCWD, temporary.c_str(), AT_FDCWD, path.c_str(),
                                     RENAME_NOREPLACE) == 0;
    if (!written) {
        const std::string message = failure(path);
        ::unlink(temporary.c_str());
        return message;
    }
    return std::nullopt;
}
