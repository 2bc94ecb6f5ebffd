// Shows the movie, or says in words why there is none.
{
  const settings = window.corvanePlay;
  const stage = document.getElementById("stage");
  const message = document.getElementById("message");

  const say = (text) => {
    message.textContent = text ?? "";
    message.hidden = !text;
  };

  const problem = async () => {
    if (typeof WebAssembly !== "object") {
      return "This browser has no WebAssembly, or it is switched off; the application cannot be shown.";
    }
    const answer = await fetch(settings.movie, {method: "HEAD"}).catch(() => null);
    if (!answer?.ok) return `The movie ${decodeURIComponent(settings.movie)} is not there.`;
    if (!await settings.ready) return "Ruffle, which shows the movie, could not be loaded.";
    return null;
  };

  const makePlayer = () => {
    const player = window.RufflePlayer.newest().createPlayer();
    player.id = "movie";
    if (settings.scale) {
      stage.className = "scaled";
    } else {
      player.style.width = `${settings.width}px`;
      player.style.height = `${settings.height}px`;
    }
    stage.append(player);
    return player;
  };

  const start = async () => {
    const trouble = await problem();
    if (trouble) return say(trouble);
    await makePlayer().ruffle().load({
      ...window.RufflePlayer.config, url: settings.movie, parameters: settings.flashvars,
      letterbox: settings.scale ? "on" : "off",
    });
  };

  const refusal = "The connection to corvane-play was refused or has ended. Close this page and start corvane-play again.";
  addEventListener("corvane-play", ({detail}) => {
    if (detail === "refused") {
      say(refusal);
    } else if (message.textContent === refusal) {
      say(null);
    }
  });
  start().catch((error) => say(`The application could not be started: ${error.message ?? error}`));
}
