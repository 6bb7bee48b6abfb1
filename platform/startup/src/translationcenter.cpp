// Counts how often each translation context is registered.
#include <startup/translationcenter.h>

#include <QMap>

struct TranslationCenter::Private {
    QMap<QString, int> useCounts;
};

TranslationCenter& TranslationCenter::Instance()
{
    static TranslationCenter center;
    return center;
}

TranslationCenter::TranslationCenter() : m_private(std::make_unique<Private>())
{
}

TranslationCenter::~TranslationCenter() = default;

void TranslationCenter::Register(const QString& context)
{
    ++m_private->useCounts[context];
}

void TranslationCenter::Unregister(const QString& context)
{
    const auto found = m_private->useCounts.find(context);
    if (found != m_private->useCounts.end() && --found.value() == 0) {
        m_private->useCounts.erase(found);
    }
}

QStringList TranslationCenter::Contexts() const
{
    return m_private->useCounts.keys();
}
