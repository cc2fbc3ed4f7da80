// "tarn-host ks": what an application can tell a transform and its camera, from the command line.
#pragma once

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

#include "tools/command/Command.h"
#include "tools/ks/KsActionLine.h"
#include "tools/ks/KsSession.h"

namespace tarn_host
{

// Confined.
class KsCommand final : public Command
{
  public:
    // Makes the calls over a transform.
    using Runner = std::function<void(const KsSessionOptions &, const std::function<void(const KsClient &)> &)>;

    // Over the module, onto the standard output.
    KsCommand();
    // Tests bring a transform of their own. `output` outlives the command.
    KsCommand(Runner sessionRunner, std::ostream &resultOutput);

    void AddOptions(CLI::App &app) override;
    ExitCode Run() override;

  private:
    KsSessionOptions ReadOptions() const;
    std::vector<KsAction> ReadActions() const;

    Runner runner;
    std::ostream &output;
    KsActionLine action;
    std::vector<std::string> actionTexts; // of "ks do"
    TransformKind transform = TransformKind::Depth;
    std::string module; // as typed
    bool registerFirst = false;
    bool json = false;
};

} // namespace tarn_host
