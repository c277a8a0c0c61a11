#include "cli/Commands.h"
#include "cli/MockupList.h"

namespace quillomat {

ExitStatus runRender(const GlobalOptions& options, RenderJob job) {
    if (options.json && job.output == "-") {
        return failUsage("render", "--json and -o - both want standard output");
    }
    if (job.crop && !job.background) {
        return failUsage("render", "--crop needs a background (-b)");
    }
    if (job.blur && !job.background) {
        return failUsage("render", "--blur needs a background (-b)");
    }
    const auto world = World::open(options);
    if (!world) {
        return fail("render", world.reason());
    }
    const auto mockup = findMockup(**world, job.mockup);
    if (!mockup) {
        return fail(job.mockup, mockup.reason());
    }
    job.mockup = mockup->name;
    const auto report = renderMockup(**world, job);
    if (!report) {
        // The reason names its input already.
        const auto colon = report.reason().find(": ");
        return colon == std::string::npos ? fail(job.mockup, report.reason())
                                          : fail(report.reason().substr(0, colon), report.reason().substr(colon + 2));
    }
    if (options.json) {
        printJson(Value::object({{"output", Value::string(report->output)},
                                 {"width", Value::integer(report->size.width)},
                                 {"height", Value::integer(report->size.height)},
                                 {"milliseconds", Value::integer(report->duration.count())}}));
    } else if (!job.output) {
        printLine(report->output);
    }
    return ExitStatus::done;
}

} // namespace quillomat
