// What the tests of "rectool map --geojson" share.
#pragma once

#include <nlohmann/json.hpp>

#include "support/program.h"

using TestSupport::ProgramResult;
using TestSupport::runProgram;

/// Runs recstation, which must record one file for the direction finder. @return that file
[[nodiscard]] QString recorded(const QString& folder, const QStringList& source);
/// Runs rectool map FILE --geojson.
[[nodiscard]] ProgramResult geoJson(const QString& file, const QStringList& more = {});
/// The same, which must give a document; its geometry is checked against what RFC 7946 asks for.
[[nodiscard]] nlohmann::json geoJsonDocument(const QString& file, const QStringList& more = {});
/// The features of a type ("bearing") in their order.
[[nodiscard]] std::vector<nlohmann::json> featuresOf(const nlohmann::json& document, const std::string& type);
