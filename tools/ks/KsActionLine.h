// The words behind one action of "tarn-host ks": list, get, set, command.
#pragma once

#include <array>
#include <string>

#include "tools/ks/KsActions.h"

namespace CLI
{
class App;
}

namespace tarn_host
{

// Read by the parser of a command line, or of one text given to "ks do". Confined.
class KsActionLine
{
  public:
    // Adds a subcommand per action; `this` outlives the parser.
    void AddTo(CLI::App &app);
    bool IsGiven() const noexcept
    {
        return make != nullptr;
    }
    // Once a line with an action has been read. Throws UsageError.
    KsAction Make(TransformKind transform) const
    {
        return (this->*make)(transform);
    }

  private:
    using Maker = KsAction (KsActionLine::*)(TransformKind) const;

    CLI::App &AddAction(CLI::App &app, const std::string &verb, const std::string &help, Maker maker);
    void AddCommand(CLI::App &app);
    KsAction MakeList(TransformKind transform) const;
    KsAction MakeGet(TransformKind transform) const;
    KsAction MakeSet(TransformKind transform) const;
    KsAction MakeCommand(TransformKind transform) const;

    Maker make = nullptr;
    // As typed; empty for what was not given.
    std::string name;
    std::string value;
    std::string opcode;
    std::array<std::string, 4> parameters;
    std::string send;
    std::string answer;
};

} // namespace tarn_host
