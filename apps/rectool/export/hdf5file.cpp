// Groups, datasets, attributes and axes of HDF5 files.
#include "hdf5file.h"

#include <algorithm>
#include <array>
#include <limits>

#include <hdf5_hl.h>

namespace RecTool {

namespace {

constexpr hsize_t MostCellsOfChunk = 262'144;

/// The innermost reason, which names what the system said.
herr_t takeReason(unsigned int /*depth*/, const H5E_error2_t* error, void* text)
{
    auto& reason = *static_cast<std::string*>(text);
    if (reason.empty() && error->desc != nullptr) {
        reason = error->desc;
    }
    return 0;
}

/// @param isInFile or as it lies in memory
hid_t typeOf(Hdf5Kind kind, bool isInFile)
{
    switch (kind) {
        case Hdf5Kind::Float:
            return H5Tcopy(isInFile ? H5T_IEEE_F32LE : H5T_NATIVE_FLOAT);
        case Hdf5Kind::Double:
            return H5Tcopy(isInFile ? H5T_IEEE_F64LE : H5T_NATIVE_DOUBLE);
        case Hdf5Kind::Int64:
            return H5Tcopy(isInFile ? H5T_STD_I64LE : H5T_NATIVE_INT64);
        default:
            break;
    }
    const hid_t text = H5Tcopy(H5T_C_S1);
    H5Tset_size(text, H5T_VARIABLE);
    H5Tset_cset(text, H5T_CSET_UTF8);
    return text;
}

void describeObject(Hdf5Problem& problem, hid_t object, const char* name, Hdf5Kind kind, const void* value)
{
    const Hdf5Handle type(typeOf(kind, true), H5Tclose);
    const Hdf5Handle here(typeOf(kind, false), H5Tclose);
    const Hdf5Handle space(H5Screate(H5S_SCALAR), H5Sclose);
    const Hdf5Handle attribute(problem.check(H5Acreate2(object, name, type.id(), space.id(), H5P_DEFAULT, H5P_DEFAULT)),
                               H5Aclose);
    if (attribute.id() >= 0) {
        problem.check(H5Awrite(attribute.id(), here.id(), value));
    }
}

void describeInWords(Hdf5Problem& problem, hid_t object, const char* name, const std::string& text)
{
    const char* const words = text.c_str();
    describeObject(problem, object, name, Hdf5Kind::Text, static_cast<const void*>(&words));
}

/// Groups keep the order in which things were put in, which some readers want.
Hdf5Handle orderedGroups(hid_t kind)
{
    Hdf5Handle properties(H5Pcreate(kind), H5Pclose);
    H5Pset_link_creation_order(properties.id(), H5P_CRT_ORDER_TRACKED | H5P_CRT_ORDER_INDEXED);
    return properties;
}

hid_t makeFile(Hdf5Problem& problem, const std::string& file)
{
    H5dont_atexit();  // what is left open of a file that could not be written is lost without a word
    H5Eset_auto2(H5E_DEFAULT, nullptr, nullptr);
    const Hdf5Handle creation = orderedGroups(H5P_FILE_CREATE);
    const Hdf5Handle access(H5Pcreate(H5P_FILE_ACCESS), H5Pclose);
    H5Pset_fclose_degree(access.id(), H5F_CLOSE_STRONG);
    return problem.check(H5Fcreate(file.c_str(), H5F_ACC_TRUNC, creation.id(), access.id()));
}

hid_t makeGroup(const Hdf5Group& root, const std::string& path)
{
    std::size_t end = 0;
    bool isThere = true;
    while (isThere && end != std::string::npos) {
        end = path.find('/', end + 1);
        isThere = H5Lexists(root.id(), path.substr(0, end).c_str(), H5P_DEFAULT) > 0;
    }
    if (isThere) {
        return H5Gopen2(root.id(), path.c_str(), H5P_DEFAULT);
    }
    const Hdf5Handle creation = orderedGroups(H5P_GROUP_CREATE);
    const Hdf5Handle links(H5Pcreate(H5P_LINK_CREATE), H5Pclose);
    H5Pset_create_intermediate_group(links.id(), 1);
    H5Pset_char_encoding(links.id(), H5T_CSET_UTF8);
    return H5Gcreate2(root.id(), path.c_str(), links.id(), creation.id(), H5P_DEFAULT);
}

}  // namespace

void Hdf5Problem::note()
{
    if (!m_text.empty()) {
        return;
    }
    H5Ewalk2(H5E_DEFAULT, H5E_WALK_UPWARD, takeReason, &m_text);
    constexpr const char* System = "error message = '";
    const std::size_t begin = m_text.find(System);
    if (begin != std::string::npos) {
        const std::size_t message = begin + std::string(System).size();
        m_text = m_text.substr(message, m_text.find('\'', message) - message);
    }
    m_text = m_text.empty() ? "The HDF5 library gives no reason." : m_text + '.';
}

Hdf5Group::Hdf5Group(Hdf5Setting& setting, const std::string& file)
    : m_setting(&setting), m_handle(makeFile(setting.problem, file), H5Fclose)
{
}

Hdf5Group::Hdf5Group(const Hdf5Group& root, const std::string& path)
    : m_setting(&root.setting()), m_handle(m_setting->problem.check(makeGroup(root, path)), H5Gclose)
{
}

void Hdf5Group::describe(const char* name, const std::string& text)
{
    describeInWords(m_setting->problem, id(), name, text);
}

void Hdf5Group::describe(const char* name, std::int64_t number)
{
    describeObject(m_setting->problem, id(), name, Hdf5Kind::Int64, &number);
}

Hdf5Column::Hdf5Column(const Hdf5Group& group, const char* name, Hdf5Kind kind, std::size_t width, std::size_t rows)
    : m_setting(&group.setting()),
      m_kind(kind),
      m_width(width),
      m_isNew(H5Lexists(group.id(), name, H5P_DEFAULT) <= 0),
      m_rowsOfChunk(rows)
{
    Hdf5Problem& problem = m_setting->problem;
    if (m_isNew) {
        m_handle = create(group, name, rows);
        return;
    }
    m_handle = Hdf5Handle(problem.check(H5Dopen2(group.id(), name, H5P_DEFAULT)), H5Dclose);
    const Hdf5Handle space(problem.check(H5Dget_space(m_handle.id())), H5Sclose);
    std::array<hsize_t, 2> size{};
    problem.check(H5Sget_simple_extent_dims(space.id(), size.data(), nullptr));
    m_rows = size[0];
}

Hdf5Handle Hdf5Column::create(const Hdf5Group& group, const char* name, std::size_t rows)
{
    const int axes = m_width == 0 ? 1 : 2;
    const std::array<hsize_t, 2> size{0, m_width};
    const std::array<hsize_t, 2> most{H5S_UNLIMITED, m_width};
    const std::array<hsize_t, 2> chunk{rows, std::min(std::max<hsize_t>(m_width, 1), MostCellsOfChunk)};
    const Hdf5Handle space(H5Screate_simple(axes, size.data(), most.data()), H5Sclose);
    const Hdf5Handle creation(H5Pcreate(H5P_DATASET_CREATE), H5Pclose);
    H5Pset_chunk(creation.id(), axes, chunk.data());
    if (m_setting->deflate > 0 && m_kind != Hdf5Kind::Text) {
        H5Pset_shuffle(creation.id());
        H5Pset_deflate(creation.id(), m_setting->deflate);
    }
    constexpr float None = std::numeric_limits<float>::quiet_NaN();
    if (m_kind == Hdf5Kind::Float) {
        H5Pset_fill_value(creation.id(), H5T_NATIVE_FLOAT, &None);
    }
    const Hdf5Handle type(typeOf(m_kind, true), H5Tclose);
    Hdf5Handle column(m_setting->problem.check(
                          H5Dcreate2(group.id(), name, type.id(), space.id(), H5P_DEFAULT, creation.id(), H5P_DEFAULT)),
                      H5Dclose);
    if (m_kind == Hdf5Kind::Float) {
        describeObject(m_setting->problem, column.id(), "_FillValue", m_kind, &None);
    }
    return column;
}

void Hdf5Column::append(const void* cells, std::size_t rows)
{
    Hdf5Problem& problem = m_setting->problem;
    if (rows == 0 || !problem.text().empty()) {
        return;
    }
    const int axes = m_width == 0 ? 1 : 2;
    const std::array<hsize_t, 2> size{m_rows + rows, m_width};
    const std::array<hsize_t, 2> begin{m_rows, 0};
    const std::array<hsize_t, 2> count{rows, m_width};
    problem.check(H5Dset_extent(m_handle.id(), size.data()));
    const Hdf5Handle there(problem.check(H5Dget_space(m_handle.id())), H5Sclose);
    problem.check(H5Sselect_hyperslab(there.id(), H5S_SELECT_SET, begin.data(), nullptr, count.data(), nullptr));
    const Hdf5Handle here(H5Screate_simple(axes, count.data(), nullptr), H5Sclose);
    const Hdf5Handle type(typeOf(m_kind, false), H5Tclose);
    problem.check(H5Dwrite(m_handle.id(), type.id(), here.id(), there.id(), H5P_DEFAULT, cells));
    m_rows += rows;
}

void Hdf5Column::describe(const char* name, const std::string& text)
{
    describeInWords(m_setting->problem, m_handle.id(), name, text);
}

void Hdf5Column::makeScale(const char* name)
{
    m_setting->problem.check(H5DSset_scale(m_handle.id(), name));
}

void Hdf5Column::attach(const Hdf5Column& scale, unsigned int axis, const char* name)
{
    m_setting->problem.check(H5DSattach_scale(m_handle.id(), scale.m_handle.id(), axis));
    m_setting->problem.check(H5DSset_label(m_handle.id(), axis, name));
}

Hdf5Column makeHdf5Times(const Hdf5Group& group)
{
    constexpr std::size_t Rows = 4096;
    Hdf5Column times(group, "time", Hdf5Kind::Int64, 0, Rows);
    if (!times.isNew()) {
        return times;
    }
    times.makeScale("time");
    if (group.setting().hasClock) {
        times.describe("standard_name", "time");
        times.describe("long_name", "time of measurement, UTC");
        times.describe("units", "microseconds since 1970-01-01 00:00:00");
        times.describe("calendar", "proleptic_gregorian");
    } else {
        times.describe("long_name", "time of measurement since the start of the recording, which is not known");
        times.describe("units", "microseconds");
    }
    return times;
}

}  // namespace RecTool
