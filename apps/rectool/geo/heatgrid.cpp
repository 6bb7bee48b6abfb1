// Spreading bearings over the directions around a station, and these over the cells of a grid.
#include "heatgrid.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace RecTool::Geo {

namespace {

constexpr double DegPerRadian = 180 / std::numbers::pi;
constexpr double WholeCircleDeg = 360;
constexpr std::size_t Directions = 7200;  // a twentieth of a degree each
constexpr double PerDegree = Directions / WholeCircleDeg;

/// From -180 to 180.
double wound(double degrees)
{
    return std::remainder(degrees, WholeCircleDeg);
}

/// What a bearing says for places by their distance from its azimuth, as far as it says more than next to nothing.
std::vector<double> evidenceBesides(double sigmaDeg)
{
    constexpr double Stray = 0.1;
    constexpr double NextToNothing = 1e-4;
    const double height = (1 - Stray) / Stray * WholeCircleDeg / (sigmaDeg * std::sqrt(2 * std::numbers::pi));
    std::vector<double> kernel;
    for (std::size_t i = 0; i <= Directions / 2; ++i) {
        const double off = static_cast<double>(i) / PerDegree / sigmaDeg;
        const double evidence = std::log1p(height * std::exp(-off * off / 2));
        if (evidence < NextToNothing) {
            break;
        }
        kernel.push_back(evidence);
    }
    return kernel;
}

}  // namespace

DegreeLengths degreeLengths(double latitudeDeg)
{
    constexpr double EquatorM = 6'378'137;
    constexpr double Eccentricity2 = 0.00669437999014;
    const double sine = std::sin(latitudeDeg / DegPerRadian);
    const double w2 = 1 - Eccentricity2 * sine * sine;
    const double across = EquatorM / std::sqrt(w2);
    return {across * (1 - Eccentricity2) / w2 / DegPerRadian,
            across * std::cos(latitudeDeg / DegPerRadian) / DegPerRadian};
}

void AreaAround::add(const Position& position)
{
    if (!m_area) {
        m_area = {position.latitudeDeg, position.longitudeDeg, position.latitudeDeg, position.longitudeDeg};
        return;
    }
    const double middle = m_area->middle().longitudeDeg;
    const double longitude = middle + wound(position.longitudeDeg - middle);
    m_area->southDeg = std::min(m_area->southDeg, position.latitudeDeg);
    m_area->northDeg = std::max(m_area->northDeg, position.latitudeDeg);
    m_area->westDeg = std::min(m_area->westDeg, longitude);
    m_area->eastDeg = std::max(m_area->eastDeg, longitude);
}

std::optional<Area> AreaAround::area(double aroundM) const
{
    constexpr double FarthestDeg = 85;
    if (!m_area) {
        return std::nullopt;
    }
    Area area = *m_area;
    const double north = aroundM / degreeLengths(area.middle().latitudeDeg).northM;
    area.southDeg -= north;
    area.northDeg += north;
    if (area.southDeg < -FarthestDeg || area.northDeg > FarthestDeg) {
        return std::nullopt;
    }
    const double farthest = std::max(std::abs(m_area->southDeg), std::abs(m_area->northDeg));
    const double east = aroundM / degreeLengths(farthest).eastM;
    const double width = std::min(area.eastDeg - area.westDeg + 2 * east, WholeCircleDeg);
    area.westDeg = wound(area.westDeg - east);
    area.eastDeg = area.westDeg + width;
    return area;
}

HeatGrid::HeatGrid(const Area& area, const HeatSettings& settings)
    : m_area(area),
      m_reachM(settings.reachM),
      m_kernel(evidenceBesides(settings.sigmaDeg)),
      m_within(static_cast<std::size_t>(2 * settings.sigmaDeg * PerDegree)),
      m_taken(Directions),
      m_seen(Directions)
{
    const DegreeLengths degree = degreeLengths(area.middle().latitudeDeg);
    const double widthM = (area.eastDeg - area.westDeg) * degree.eastM;
    const double heightM = (area.northDeg - area.southDeg) * degree.northM;
    const double cellM = std::max(widthM, heightM) / static_cast<double>(settings.cells);
    const auto count = [&](double lengthM) {
        return static_cast<std::size_t>(std::max(1.0, std::round(lengthM / cellM)));
    };
    m_columns = count(widthM);
    m_rows = count(heightM);
    m_cells.resize(m_columns * m_rows);
}

Area HeatGrid::areaOf(std::size_t column, std::size_t row) const
{
    const auto part = [](double from, double to, std::size_t i, std::size_t count) {
        return from + (to - from) * static_cast<double>(i) / static_cast<double>(count);
    };
    return {part(m_area.southDeg, m_area.northDeg, row, m_rows),
            part(m_area.westDeg, m_area.eastDeg, column, m_columns),
            part(m_area.southDeg, m_area.northDeg, row + 1, m_rows),
            part(m_area.westDeg, m_area.eastDeg, column + 1, m_columns)};
}

bool HeatGrid::isAtAnchor(const Position& position) const
{
    constexpr double Near = 0.25;
    const double cellDeg = (m_area.northDeg - m_area.southDeg) / static_cast<double>(m_rows);
    const double north = position.latitudeDeg - m_anchor->latitudeDeg;
    const double east =
        wound(position.longitudeDeg - m_anchor->longitudeDeg) * std::cos(position.latitudeDeg / DegPerRadian);
    return std::hypot(north, east) <= Near * cellDeg;
}

void HeatGrid::add(const LineOfBearing& line, double weight, double momentMs)
{
    if (m_anchor && !isAtAnchor(line.from)) {
        finish();
    }
    if (!m_anchor) {
        m_anchor = line.from;
    }
    const double place = (line.azimuthDeg - std::floor(line.azimuthDeg / WholeCircleDeg) * WholeCircleDeg) * PerDegree;
    const double share = place - std::floor(place);
    const std::size_t below = static_cast<std::size_t>(place) % Directions;
    const std::size_t above = (below + 1) % Directions;
    m_taken[below].weight += weight * (1 - share);
    m_taken[above].weight += weight * share;
    Pointing& nearest = m_taken[2 * share < 1 ? below : above];
    ++nearest.bearings;
    nearest.firstMs = std::min(nearest.firstMs, momentMs);
    nearest.lastMs = std::max(nearest.lastMs, momentMs);
}

/// What the bearings of one direction say for all those around it.
void HeatGrid::spread(std::size_t direction)
{
    const Pointing& taken = m_taken[direction];
    const auto visit = [&](std::size_t off, std::size_t seen) {
        Cell& cell = m_seen[seen % Directions];
        cell.evidence += off < m_kernel.size() ? taken.weight * m_kernel[off] : 0;
        if (taken.bearings > 0 && off <= m_within) {
            cell.bearings += taken.bearings;
            cell.firstMs = std::min(cell.firstMs, taken.firstMs);
            cell.lastMs = std::max(cell.lastMs, taken.lastMs);
        }
    };
    visit(0, direction);
    const std::size_t last = std::min(std::max(m_kernel.size(), m_within + 1), Directions / 2);
    for (std::size_t off = 1; off < last; ++off) {
        visit(off, direction + off);
        visit(off, direction + Directions - off);
    }
}

void HeatGrid::fillRow(std::size_t row)
{
    const double latitude = areaOf(0, row).middle().latitudeDeg;
    const double middle = (latitude + m_anchor->latitudeDeg) / 2;
    const DegreeLengths degree = degreeLengths(middle);
    const double northM = (latitude - m_anchor->latitudeDeg) * degree.northM;
    const double convergence = std::sin(middle / DegPerRadian) / 2;
    if (std::abs(northM) > m_reachM) {
        return;
    }
    for (std::size_t column = 0; column < m_columns; ++column) {
        const double east = wound(areaOf(column, row).middle().longitudeDeg - m_anchor->longitudeDeg);
        const double eastM = east * degree.eastM;
        if (std::hypot(eastM, northM) > m_reachM) {
            continue;
        }
        const double azimuth = std::atan2(eastM, northM) * DegPerRadian - east * convergence;
        const double place = (azimuth < 0 ? azimuth + WholeCircleDeg : azimuth) * PerDegree;
        const std::size_t below = static_cast<std::size_t>(place) % Directions;
        const Cell& left = m_seen[below];
        const Cell& right = m_seen[(below + 1) % Directions];
        const double share = place - std::floor(place);
        const Cell& nearest = 2 * share < 1 ? left : right;
        Cell& cell = m_cells[row * m_columns + column];
        cell.evidence += left.evidence * (1 - share) + right.evidence * share;
        cell.bearings += nearest.bearings;
        cell.firstMs = std::min(cell.firstMs, nearest.firstMs);
        cell.lastMs = std::max(cell.lastMs, nearest.lastMs);
    }
}

void HeatGrid::finish()
{
    if (!m_anchor) {
        return;
    }
    std::fill(m_seen.begin(), m_seen.end(), Cell());
    for (std::size_t direction = 0; direction < Directions; ++direction) {
        if (m_taken[direction].weight > 0 || m_taken[direction].bearings > 0) {
            spread(direction);
        }
    }
    for (std::size_t row = 0; row < m_rows; ++row) {
        fillRow(row);
    }
    std::fill(m_taken.begin(), m_taken.end(), Pointing());
    m_anchor.reset();
}

}  // namespace RecTool::Geo
