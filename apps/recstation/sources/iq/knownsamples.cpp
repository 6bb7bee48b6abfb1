// What a file's name tells of its samples: times and frequencies; and what its first bytes: that it holds none.
#include "sources/iq/knownsamples.h"

#include <algorithm>
#include <array>

#include <QDateTime>
#include <QRegularExpression>

#include <terminaltext/quantity.h>

namespace RecStation {

namespace {

void readTime(const QString& name, Qt::TimeSpec zone, KnownSamples& out)
{
    static const QRegularExpression dayFirst(QStringLiteral("(?:^|[_-])(\\d{8})[T_-](\\d{6})(?:Z|[_.-]|$)"));
    static const QRegularExpression dayLast(
        QStringLiteral("_(\\d{2}-\\d{2}-\\d{2})_(\\d{2}-\\d{2}-\\d{4})(?:[_.-]|$)"));
    auto match = dayFirst.match(name);
    QString form = QStringLiteral("yyyyMMddHHmmss");
    if (!match.hasMatch()) {
        match = dayLast.match(name);
        form = QStringLiteral("HH-mm-ssdd-MM-yyyy");
        zone = Qt::LocalTime;
    }
    QDateTime time = QDateTime::fromString(match.captured(1) + match.captured(2), form);
    time.setTimeSpec(zone);
    if (match.hasMatch() && time.isValid() && time.toMSecsSinceEpoch() > 0) {
        constexpr unsigned long long MicrosecondsPerMillisecond = 1000;
        out.captures.front().startTime =
            static_cast<unsigned long long>(time.toMSecsSinceEpoch()) * MicrosecondsPerMillisecond;
        out.localTime = zone == Qt::LocalTime;
    }
}

struct Beginning {
    std::string_view bytes;
    const char* clause;
};

using std::string_view_literals::operator""sv;

// Three bytes and more: samples begin like that once in sixteen million recordings.
constexpr std::array Beginnings = {
    Beginning{"\x1F\x8B\x08"sv, "is packed by gzip: unpack it first"},
    Beginning{"\x28\xB5\x2F\xFD"sv, "is packed by Zstandard: unpack it first"},
    Beginning{"\xFD\x37zXZ\0"sv, "is packed by xz: unpack it first"},
    Beginning{"BZh91AY"sv, "is packed by bzip2: unpack it first"},
    Beginning{"PK\x03\x04"sv, "is a ZIP archive: unpack it first"},
    Beginning{"fLaC"sv, "is FLAC: make a WAV file of it first"},
    Beginning{"riff\x2E\x91\xCF\x11"sv, "is Wave64: make a file of WAV or RF64 of it first"},
    Beginning{"RIFX"sv, "is a WAV file of big-endian numbers: make an ordinary one of it first"},
};

}  // namespace

KnownSamples knownByName(const QString& name)
{
    static const QRegularExpression withSps(
        QStringLiteral("-(\\d{1,6}(?:_\\d{1,9})?)([kMG]?)Hz-(\\d{1,6}(?:_\\d{1,9})?)([kMG]?)Sps(?:-|$)"));
    static const QRegularExpression withUnit(QStringLiteral("_(\\d{1,12}(?:\\.\\d{1,9})?)([kMG]?)Hz(?:[_.-]|$)"),
                                             QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression inHertz(QStringLiteral("^gqrx_\\d{8}_\\d{6}_(\\d{1,15})_(\\d{1,12})_fc$"));
    static const QRegularExpression behindTime(QStringLiteral("^\\d{8}T\\d{6}Z_(\\d{4,12})(?:_.*)?_iq$"));
    static const QRegularExpression withRate(
        QStringLiteral("_(\\d{1,6}(?:\\.\\d{1,9})?)M_(\\d{1,6}(?:\\.\\d{1,9})?)k$"));
    const auto number = [](QString digits, const QString& prefix) {
        digits.replace(QLatin1Char('_'), QLatin1Char('.'));
        return TerminalText::parseQuantity((digits + prefix).toStdString(), {}).value_or(0);
    };
    KnownSamples known;
    KnownCapture& capture = known.captures.front();
    const auto sps = withSps.match(name);
    readTime(name, sps.hasMatch() ? Qt::LocalTime : Qt::UTC, known);
    if (sps.hasMatch()) {
        capture.centreHz = number(sps.captured(1), sps.captured(2));
        known.rateHz = number(sps.captured(3), sps.captured(4));
    } else if (const auto unit = withUnit.match(name); unit.hasMatch()) {
        capture.centreHz = number(unit.captured(1), unit.captured(2));
    } else if (const auto hertz = inHertz.match(name); hertz.hasMatch()) {
        capture.centreHz = number(hertz.captured(1), "");
        known.rateHz = number(hertz.captured(2), "");
        known.format = "cf32_le";
    } else if (const auto behind = behindTime.match(name); behind.hasMatch()) {
        capture.centreHz = number(behind.captured(1), "");
    } else if (const auto both = withRate.match(name); both.hasMatch()) {
        capture.centreHz = number(both.captured(1), "M");
        known.rateHz = number(both.captured(2), "k");
    }
    if (known.rateHz && !(*known.rateHz > 0)) {
        known.rateHz.reset();
    }
    return known;
}

std::string whyNoSamples(std::string_view first)
{
    const auto* const found = std::find_if(Beginnings.begin(), Beginnings.end(), [first](const Beginning& beginning) {
        return first.starts_with(beginning.bytes);
    });
    if (found != Beginnings.end()) {
        return found->clause;
    }
    const bool wav = (first.starts_with("RIFF") || first.starts_with("RF64")) && first.find("WAVE") == 8;
    return wav ? "is WAV, which can only be read from a file: name that" : "";
}

}  // namespace RecStation
