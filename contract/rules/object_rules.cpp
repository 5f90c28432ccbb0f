#include "contract/kinds.h"
#include "contract/rules/rules.h"
#include "contract/slot.h"

#include <QObject>

#include <array>
#include <memory>

namespace contract {

namespace {

using namespace interfaces;

template <class Interface>
using Make = std::shared_ptr<Interface>(const QJsonObject&, QObject*);

void comeThroughTheirSlots(Trial& trial) {
    auto* const factory = &trial.plugin().factory();
    const auto& settings = trial.settings();
    const auto messages = slot<Make<IMessagesDatabase>>::call(factory, 1, settings, nullptr);
    const auto eav = slot<Make<IEAVDatabase>>::call(factory, 2, settings, nullptr);
    const auto states = slot<Make<IDriverState>>::call(factory, 3, settings, nullptr);
    const auto clients = slot<Make<IDeviceClientsDatabase>>::call(factory, 4, settings, nullptr);
    expectObject(QStringLiteral("what slot 1 makes"), messages);
    expectObject(QStringLiteral("what slot 2 makes"), eav);
    expectObject(QStringLiteral("what slot 3 makes"), states);
    expectObject(QStringLiteral("what slot 4 makes"), clients);

    auto* const uplinks = slot<IULAPPMessageRepository*()>::call(messages.get(), 5);
    expect(uplinks != nullptr && uplinks == messages->UlMessageRepository(),
           QStringLiteral("slot 5 of the message database is UlMessageRepository"),
           QStringLiteral("another answer"));
    auto* const downlinks = slot<IDLAPPMessageRepository*()>::call(messages.get(), 6);
    expect(downlinks != nullptr && downlinks == messages->DlMessageRepository(),
           QStringLiteral("slot 6 of the message database is DlMessageRepository"),
           QStringLiteral("another answer"));
    auto* const values = slot<IEAVRepository*()>::call(eav.get(), 5);
    expect(values != nullptr && values == eav->EAVRepository(),
           QStringLiteral("slot 5 of the EAV database is EAVRepository"),
           QStringLiteral("another answer"));
    auto* const registry = slot<IDeviceClientsRepository*()>::call(clients.get(), 5);
    expect(registry != nullptr && registry == clients->DeviceClientsRepository(),
           QStringLiteral("slot 5 of the client database is DeviceClientsRepository"),
           QStringLiteral("another answer"));
}

/// Two objects that one operation has made.
template <class Interface>
void expectOwnedByTheCaller(const QString& what, const std::shared_ptr<Interface>& one,
                            const std::shared_ptr<Interface>& other) {
    expect(one != other, QStringLiteral("every call makes %1 of its own").arg(what),
           QStringLiteral("the same object"));
    expectEqual(QStringLiteral("the number of owners of ") + what, one.use_count(), 1L);
}

void belongToTheCaller(Trial& trial) {
    expectOwnedByTheCaller(QStringLiteral("a message database"), trial.makeMessages(),
                           trial.makeMessages());
    expectOwnedByTheCaller(QStringLiteral("an EAV database"), trial.makeEav(), trial.makeEav());
    expectOwnedByTheCaller(QStringLiteral("a driver state"), trial.makeStates(),
                           trial.makeStates());
    expectOwnedByTheCaller(QStringLiteral("a client database"), trial.makeClients(),
                           trial.makeClients());
}

/// One object of each kind.
struct Objects {
    Objects(Trial& trial, QObject* parent)
        : messages(trial.makeMessages(parent)), eav(trial.makeEav(parent)),
          states(trial.makeStates(parent)), clients(trial.makeClients(parent)) {}

    /// Each object reaches its server.
    void use(int device) const {
        messages->UlMessageRepository()->SaveMessage(Uplinks::record(device, 1));
        eav->EAVRepository()->SaveValues({Values::record(device, 1)});
        states->Pull(device);
        states->DLqueue()->Pull(device);
        clients->DeviceClientsRepository()->GetDeviceClients(device);
    }

    std::shared_ptr<IMessagesDatabase> messages;
    std::shared_ptr<IEAVDatabase> eav;
    std::shared_ptr<IDriverState> states;
    std::shared_ptr<IDeviceClientsDatabase> clients;
};

void ignoreTheParent(Trial& trial) {
    auto parent = std::make_unique<QObject>();
    const Objects objects(trial, parent.get());
    expect(parent->children().isEmpty(), QStringLiteral("the parent gets no children"),
           QStringLiteral("%1 children").arg(parent->children().size()));
    parent.reset();
    objects.use(trial.device());
}

void outliveTheFactory(Trial& trial) {
    const Objects objects(trial, nullptr);
    delete &trial.plugin().root();
    objects.use(trial.device());
    expectFound<Uplinks>(
        objects.messages->UlMessageRepository()->GetMessages(Uplinks::everything(trial)),
        {{trial.device(), {1}}});
}

void handOutTheSamePointers(Trial& trial) {
    const Objects one(trial, nullptr);
    const Objects other(trial, nullptr);
    const auto check = [](const QString& what, auto* first, auto* again, auto* others) {
        expectObject(what, first);
        expect(again == first, what + QStringLiteral(" is the same at every call"),
               QStringLiteral("another pointer"));
        expect(others != first, what + QStringLiteral(" is the object's own"),
               QStringLiteral("another object's"));
    };
    check(QStringLiteral("the uplink repository"), one.messages->UlMessageRepository(),
          one.messages->UlMessageRepository(), other.messages->UlMessageRepository());
    check(QStringLiteral("the downlink repository"), one.messages->DlMessageRepository(),
          one.messages->DlMessageRepository(), other.messages->DlMessageRepository());
    check(QStringLiteral("the EAV repository"), one.eav->EAVRepository(), one.eav->EAVRepository(),
          other.eav->EAVRepository());
    check(QStringLiteral("the downlink queue"), one.states->DLqueue(), one.states->DLqueue(),
          other.states->DLqueue());
    check(QStringLiteral("the client repository"), one.clients->DeviceClientsRepository(),
          one.clients->DeviceClientsRepository(), other.clients->DeviceClientsRepository());
}

/// The common slots in another order than they are numbered.
void callTheCommonSlots(IDatabase& database) {
    for (const std::size_t number : {4, 1, 3, 4, 2}) {
        slot<void()>::call(&database, number);
    }
}

void haveNoTransactions(Trial& trial) {
    const Objects objects(trial, nullptr);
    auto* const uplinks = objects.messages->UlMessageRepository();
    callTheCommonSlots(*objects.messages);
    callTheCommonSlots(*objects.eav);
    callTheCommonSlots(*objects.clients);
    objects.messages->BeginTransaction();
    objects.use(trial.device());
    objects.messages->RollbackTransaction();
    objects.messages->CreateDatabase();
    objects.eav->CreateDatabase();
    expectFound<Uplinks>(uplinks->GetMessages(Uplinks::everything(trial)), {{trial.device(), {1}}});
    expectFound<Values>(objects.eav->EAVRepository()->GetValues(Values::everything(trial)),
                        {{trial.device(), {1}}});
}

void shareTheStore(Trial& trial) {
    const Objects one(trial, nullptr);
    const Objects other(trial, nullptr);
    one.use(trial.device());
    expectFound<Uplinks>(
        other.messages->UlMessageRepository()->GetMessages(Uplinks::everything(trial)),
        {{trial.device(), {1}}});
    expectFound<Values>(other.eav->EAVRepository()->GetValues(Values::everything(trial)),
                        {{trial.device(), {1}}});
}

void canBeDestroyed(Trial& trial) {
    for (int round = 0; round < 3; ++round) {
        const Objects objects(trial, nullptr);
        objects.use(trial.device(round));
    }
}

void areNeverNull(Trial& trial) {
    const QJsonObject nonsense{{QStringLiteral("url"), QStringLiteral("nonsense")},
                               {QStringLiteral("redis"), 5}};
    for (const QJsonObject& settings : {QJsonObject(), nonsense}) {
        const auto expectNoNull = [&](const QString& what, auto make) {
            bool isNull = false;
            try {
                isNull = make() == nullptr;
            } catch (...) { // what is thrown is the driver's own
                return;
            }
            expect(!isNull, what + QStringLiteral(" or an exception"),
                   QStringLiteral("a null pointer"));
        };
        auto& factory = trial.plugin().factory();
        expectNoNull(QStringLiteral("a message database"),
                     [&] { return factory.CreateMessageDatabaseInst(settings, nullptr); });
        expectNoNull(QStringLiteral("an EAV database"),
                     [&] { return factory.CreateEavDatabaseInst(settings, nullptr); });
    }
}

constexpr std::array rules{
    Rule{"objects.slots",
         "The factory's slots 1 to 4 make a message database, an EAV database, a driver state and "
         "a client database, whose slots from 5 on hand out their repositories",
         comeThroughTheirSlots},
    Rule{"objects.owner", "Every call makes an object of its own, which the caller alone owns",
         belongToTheCaller},
    Rule{"objects.parent", "The parent is ignored: it gets no child, and may go first",
         ignoreTheParent},
    Rule{"objects.factory-gone", "Objects work on when the factory is destroyed",
         outliveTheFactory},
    Rule{"objects.repositories",
         "An object hands out the same repository or queue at every call, and one of its own",
         handOutTheSamePointers},
    Rule{"objects.transactions",
         "A database's slots 1 to 4 lay out, commit, roll back and begin: they throw nothing and "
         "change no record, and every write stands at once",
         haveNoTransactions},
    Rule{"objects.one-store", "What one object has stored another one finds", shareTheStore},
    Rule{"objects.destroyed", "Objects can be made, used and destroyed again and again",
         canBeDestroyed},
    Rule{"objects.settings",
         "With settings that name no server making a database throws, or works, and gives no null "
         "pointer",
         areNeverNull},
};

} // namespace

std::span<const Rule> objectRules() {
    return rules;
}

} // namespace contract
