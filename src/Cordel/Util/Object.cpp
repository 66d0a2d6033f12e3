#include <Cordel/Util/Object.h>
#include <Cordel/Util/detail/Connection.h>
#include <Cordel/Util/detail/InvokeGate.h>
#include <Cordel/Util/detail/Signature.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>

namespace Cordel::Util {

namespace {

unsigned int countArguments(char const* signature)
{
    if (std::strstr(signature, "()"))
        return 0;
    return 1 + static_cast<unsigned int>(std::count(signature, signature + std::strlen(signature), ','));
}

bool anyBusy(Object::ConnectionList const& list)
{
    return std::any_of(list.begin(), list.end(), [](shared_ptr<Connection> const& c) { return c && c->busy; });
}

void eraseConnection(Object::ConnectionList& list, Connection const* connection)
{
    auto const it = std::find_if(list.begin(), list.end(),
                                 [connection](shared_ptr<Connection> const& c) { return c.get() == connection; });
    if (it != list.end())
        list.erase(it);
}

// Released at exit; clears the static pointer so that a late caller sees no dangling meta-object.
struct ObjectMetaObjectHolder {
    std::unique_ptr<MetaObject const> meta;
    ObjectMetaObjectHolder(MetaObject const*& slot)
        : meta(MetaObject::Instantiate(nullptr, "Object", nullptr, 0, nullptr, 0)), target(slot)
    {
        target = meta.get();
    }
    ~ObjectMetaObjectHolder() { target = nullptr; }
    MetaObject const*& target;
};

} // namespace

MetaObject const* Object::g_pMetaObject = nullptr;

Object::Object(String const& objectName) : name(objectName), tag(0), invokeGate(nullptr) {}

Object::~Object()
{
    // First, so that no posted call starts while the object comes apart.
    if (detail::InvokeGate* const gate = invokeGate.load(std::memory_order_acquire)) {
        gate->Close();
        gate->Release();
    }

    std::vector<Object*> const owned = std::move(autoDelete);
    for (Object* o : owned)
        delete o;

    for (shared_ptr<Connection> const& c : incoming)
        c->receiver = nullptr;
    for (ConnectionList* list : receiversBySignal) {
        if (!list)
            continue;
        for (shared_ptr<Connection> const& c : *list)
            if (c && c->receiver)
                eraseConnection(c->receiver->incoming, c.get());
        delete list;
    }
}

// Calls may be built for one receiver on several threads at once: the first to install a gate wins.
detail::InvokeGate* Object::shareInvokeGate()
{
    detail::InvokeGate* gate = invokeGate.load(std::memory_order_acquire);
    if (!gate) {
        auto* const made = new detail::InvokeGate;
        if (invokeGate.compare_exchange_strong(gate, made, std::memory_order_acq_rel))
            gate = made;
        else
            made->Release();
    }
    gate->Retain();
    return gate;
}

int Object::Object_Emit(unsigned int, std::vector<void*> const&) { return 0; }
int Object::Object_Invoke(unsigned int, std::vector<void*> const&) { return 0; }
MetaObject const* Object::GetMetaObject() const { return GetStaticMetaObject(); }
char const* Object::GetClassName() const { return "Object"; }

MetaObject const* Object::GetStaticMetaObject()
{
    static ObjectMetaObjectHolder const holder(g_pMetaObject);
    return g_pMetaObject;
}

String Object::Normalize(char const* signature)
{
    return String(detail::normalizeSignature(signature ? signature : "").c_str());
}

bool Object::CheckConnectArgs(char const* signalSignature, char const* memberSignature)
{
    if (!signalSignature || !memberSignature)
        return false;
    char const* signalArgs = std::strchr(signalSignature, '(');
    char const* memberArgs = std::strchr(memberSignature, '(');
    if (!signalArgs || !memberArgs)
        return false;
    ++signalArgs;
    ++memberArgs;
    if (std::strcmp(memberArgs, ")") == 0 || std::strcmp(signalArgs, memberArgs) == 0)
        return true;
    std::size_t const memberLength = std::strlen(memberArgs);
    if (memberLength == 0 || memberArgs[memberLength - 1] != ')')
        return false;
    std::size_t const leading = memberLength - 1;
    return std::strncmp(signalArgs, memberArgs, leading) == 0 && signalArgs[leading] == ',';
}

bool Object::Connect(Object* sender, char const* signal, Object* receiver, char const* member)
{
    if (!sender || !signal || !receiver || !member)
        return false;
    std::string const signalText = detail::normalizeSignature(signal);
    std::string const memberText = detail::normalizeSignature(member);

    if (signalText.empty() || signalText[0] != '2')
        return false;
    MetaObject const* senderMeta = sender->GetMetaObject();
    checked_value<unsigned int> const signalIndex = senderMeta->GetSignalIndex(signalText.c_str() + 1, true);
    if (!signalIndex.IsSet())
        return false;
    char const* signalSignature = senderMeta->GetSignalMetaData(signalIndex.Get(), true);

    if (memberText.empty())
        return false;
    MetaObject const* receiverMeta = receiver->GetMetaObject();
    char const type = memberText[0];
    checked_value<unsigned int> memberIndex;
    if (type == '1')
        memberIndex = receiverMeta->GetSlotIndex(memberText.c_str() + 1, true);
    else if (type == '2')
        memberIndex = receiverMeta->GetSignalIndex(memberText.c_str() + 1, true);
    if (!memberIndex.IsSet())
        return false;
    char const* memberSignature = type == '1' ? receiverMeta->GetSlotMetaData(memberIndex.Get(), true)
                                              : receiverMeta->GetSignalMetaData(memberIndex.Get(), true);

    if (!CheckConnectArgs(signalSignature, memberSignature))
        return false;
    return connect(sender, signalIndex.Get(), receiver, type, memberIndex.Get());
}

bool Object::connect(Object* sender, unsigned int signalIndex, Object* receiver, char type, unsigned int memberIndex)
{
    auto& lists = sender->receiversBySignal;
    unsigned int const nSignals = sender->GetMetaObject()->GetNumSignals(true);
    if (lists.size() < nSignals)
        lists.resize(nSignals, nullptr);
    if (lists.size() != nSignals || signalIndex >= lists.size())
        return false;
    ConnectionList*& list = lists[signalIndex];
    if (!list)
        list = new ConnectionList;

    MetaObject const* receiverMeta = receiver->GetMetaObject();
    char const* signature = type == '1' ? receiverMeta->GetSlotMetaData(memberIndex, true)
                                        : receiverMeta->GetSignalMetaData(memberIndex, true);
    if (!signature)
        return false;

    prune(list);
    shared_ptr<Connection> connection(
        new Connection{receiver, signature, type, memberIndex, countArguments(signature), false, sender, signalIndex});
    list->push_back(connection);
    receiver->incoming.push_back(connection);
    return true;
}

bool Object::Disconnect(Object* sender, char const* signal, Object* receiver, char const* member)
{
    if (!sender && !receiver)
        return false;
    std::string const signalText = signal ? detail::normalizeSignature(signal) : std::string();
    std::string const memberText = member ? detail::normalizeSignature(member) : std::string();
    if (signal && (signalText.empty() || signalText[0] != '2'))
        return false;
    if (member && (memberText.empty() || (memberText[0] != '1' && memberText[0] != '2')))
        return false;

    auto memberMatches = [&](Connection const& c) {
        return !member || (c.type == memberText[0] && std::strcmp(c.signature, memberText.c_str() + 1) == 0);
    };

    ConnectionList found;
    if (sender) {
        checked_value<unsigned int> signalIndex;
        if (signal) {
            signalIndex = sender->GetMetaObject()->GetSignalIndex(signalText.c_str() + 1, true);
            if (!signalIndex.IsSet())
                return false;
        }
        for (unsigned int s = 0; s < sender->receiversBySignal.size(); ++s) {
            ConnectionList const* list = sender->receiversBySignal[s];
            if (!list || (signalIndex.IsSet() && s != signalIndex.Get()))
                continue;
            for (shared_ptr<Connection> const& c : *list)
                if (c && c->receiver && (!receiver || c->receiver == receiver) && memberMatches(*c))
                    found.push_back(c);
        }
    } else {
        for (shared_ptr<Connection> const& c : receiver->incoming) {
            char const* sent = c->sender->GetMetaObject()->GetSignalMetaData(c->signalIndex, true);
            if ((!signal || (sent && std::strcmp(sent, signalText.c_str() + 1) == 0)) && memberMatches(*c))
                found.push_back(c);
        }
    }
    for (shared_ptr<Connection> const& c : found)
        detach(c);
    return !found.empty();
}

void Object::detach(shared_ptr<Connection> const& connection)
{
    if (connection->receiver) {
        eraseConnection(connection->receiver->incoming, connection.get());
        connection->receiver = nullptr;
    }
    prune(connection->sender->receiversBySignal[connection->signalIndex]);
}

// Drops cut connections, but never while a delivery walks the list: it reads entries by position.
void Object::prune(ConnectionList* list)
{
    if (!list || anyBusy(*list))
        return;
    std::erase_if(*list, [](shared_ptr<Connection> const& c) { return !c || !c->receiver; });
}

void Object::activateSignal(ConnectionList* list, std::vector<void*> const& args)
{
    if (!list)
        return;
    // An emission from within a member of this same emission finds the flags already set and
    // leaves them to the outer delivery, which still relies on them.
    bool nested = false;
    for (shared_ptr<Connection> const& c : *list) {
        if (c) {
            nested = nested || c->busy;
            c->busy = true;
        }
    }
    for (std::size_t i = 0; i < list->size(); ++i) {
        // The record itself stays put while the list may grow; it is kept alive by the list
        // because nothing is erased from a busy list.
        Connection const* c = (*list)[i].get();
        if (!c || !c->receiver)
            continue;
        if (c->type == '2')
            c->receiver->Object_Emit(c->index, args);
        else
            c->receiver->Object_Invoke(c->index, args);
    }
    if (!nested)
        for (shared_ptr<Connection> const& c : *list)
            if (c)
                c->busy = false;
}

Object::ConnectionList* Object::lookupReceivers(char const* signature) const
{
    if (!signature)
        return nullptr;
    std::string const text = detail::normalizeSignature(signature);
    char const* bare = !text.empty() && text[0] == '2' ? text.c_str() + 1 : text.c_str();
    checked_value<unsigned int> const index = GetMetaObject()->GetSignalIndex(bare, true);
    return index.IsSet() ? lookupReceivers(index.Get()) : nullptr;
}

void Object::AddAutoDelete(Object* o)
{
    if (!o || o == this || std::find(autoDelete.begin(), autoDelete.end(), o) != autoDelete.end())
        return;
    autoDelete.push_back(o);
}

bool Object::IsType(char const* className) const
{
    if (!className)
        return false;
    for (MetaObject const* meta = GetMetaObject(); meta; meta = meta->GetSuperClass())
        if (std::strcmp(meta->GetClassName(), className) == 0)
            return true;
    return false;
}

bool Object::IsType(MetaObject const* target) const
{
    for (MetaObject const* meta = GetMetaObject(); meta; meta = meta->GetSuperClass())
        if (meta == target)
            return true;
    return false;
}

} // namespace Cordel::Util
