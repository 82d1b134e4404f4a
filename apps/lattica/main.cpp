// The `lattica` program: renders scene files with the effect, and lists its parameter table.

#include <iostream>

#include <CLI/CLI.hpp>

#include "ParamsListing.h"
#include "RenderCommand.h"

int main(int argc, char** argv) {
  CLI::App app{"Lattica: a generative 3D particle effect, rendered from scene files."};
  app.require_subcommand(1);

  lattica::app::RenderOptions render;
  CLI::App* renderCommand = app.add_subcommand("render", "Render frames of a scene file");
  renderCommand->add_option("scene", render.scene, "Scene file (JSON)")->required();
  renderCommand->add_option("-o,--output", render.output,
                            "Output: numbered .png/.exr files (a run of # is the zero-padded frame "
                            "number) or one .mp4/.mov movie through ffmpeg");
  renderCommand->add_option("-f,--frames", render.frames,
                            "Frames: 12, 0-47, 0-47x2, 1,5,9 or a mix");
  renderCommand->add_option("--depth", render.depth, "Pixel kind: 8, 16 or 32 (float)");
  renderCommand->add_option("--order", render.order, "Channel order: argb or bgra");
  renderCommand->add_option("--downsample", render.downsample, "Render at 1/N resolution");
  renderCommand->add_option("--threads", render.threads, "Worker threads (default: all cores)");
  renderCommand->add_option("--host", render.host,
                            "Host id the effect sees: FXTC, KeyG, MOTN, PrMr");
  renderCommand->add_flag("--info", render.info,
                          "Print the effect's information line of every time sample");
  renderCommand->add_flag("--quiet", render.quiet, "No progress display");
  renderCommand->add_option("--save-record", render.saveRecord,
                            "After the render, write the effect's saved record (7200 bytes) here");

  bool json = false;
  std::string paramsHost = "FXTC";
  CLI::App* paramsCommand =
      app.add_subcommand("params", "Print the parameter table as the effect registers it");
  paramsCommand->add_flag("--json", json, "One JSON array, an object per row");
  paramsCommand->add_option("--host", paramsHost, "Host id: FXTC, KeyG, MOTN, PrMr");

  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp& e) {
    return app.exit(e);
  } catch (const CLI::CallForAllHelp& e) {
    return app.exit(e);
  } catch (const CLI::ParseError& e) {
    std::cerr << "lattica: " << e.what() << "\n";
    return 2;
  }

  if (*renderCommand) return lattica::app::runRender(render);

  if (paramsHost.size() != 4) {
    std::cerr << "lattica: --host: \"" << paramsHost << "\" is not a four-character host id\n";
    return 2;
  }
  uint32_t id = 0;
  for (char c : paramsHost) id = (id << 8) | uint8_t(c);
  lattica::printParameterTable(std::cout, id, json);
  return 0;
}
