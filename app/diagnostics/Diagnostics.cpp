#include "app/diagnostics/Diagnostics.h"

#include "app/account/DriveConnection.h"
#include "app/diagnostics/AccountFacts.h"
#include "app/diagnostics/BusFacts.h"
#include "app/diagnostics/DesktopFacts.h"
#include "app/session/AccountDetails.h"
#include "driveapi/GTLDriveAbout.h"
#include "platform/PlatformServices.h"

namespace quenby {

Diagnostics::Diagnostics(const Sources& sources)
    : sources_(sources) {}

Diagnostics::~Diagnostics() = default;

CompletionTicket Diagnostics::collect(QObject* context, Collected collected) {
    const CompletionGate<QString> gate(context, std::move(collected));
    auto* const bus = new BusFacts(sources_.sessionBus, sources_.drive.timeSource(), &questions_);
    bus->ask([this, bus, gate] {
        bus->deleteLater();
        gate.deliver(report(bus->sections()));
    });
    return gate.ticket();
}

QString Diagnostics::report(const QList<DiagnosticsSection>& bus) const {
    const TimeSource& time = *sources_.drive.timeSource();
    QList<DiagnosticsSection> sections{
        programSection(sources_.version),   desktopSection(), statusItemSection(sources_.platform),
        servicesSection(sources_.platform), modulesSection(),
    };
    sections += bus;
    sections += {accountSection(sources_.session, sources_.drive), quotaSection(sources_.details.DriveInfoAPI().get()),
                 clockSection(sources_.details, time), networkSection(*sources_.platform.defaults)};
    return diagnosticsText(sections, personalWords());
}

PersonalWords Diagnostics::personalWords() const {
    PersonalWords personal = PersonalWords::ofThisUser();
    if (const auto& user = sources_.details.dicUserData()) {
        for (const QString& name : {user->displayName, user->emailAddress.section(QLatin1Char('@'), 0, 0)}) {
            if (name.size() > 1)
                personal.names.append(name);
        }
    }
    return personal;
}

} // namespace quenby
