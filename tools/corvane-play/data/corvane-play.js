// Behind the settings, which corvane-play puts in front of this script: gives Ruffle the way to
// Corvane, loads it, and tells corvane-play that the page is there. Any page beside the movie may
// include it, before all other scripts: <script src="corvane-play.js"></script>
{
  const settings = window.corvanePlay;
  const socketAddress = (path) => `ws://${location.host}${path}`;
  const socketProxy = settings.sockets.map(({host, port, path}) => ({host, port, proxyUrl: socketAddress(path)}));
  const defaults = {
    allowScriptAccess: true, autoplay: "on", unmuteOverlay: "hidden", splashScreen: false, upgradeToHttps: false,
  };

  // A page may set its own configuration of Ruffle later on; the way to Corvane stays in it.
  const configureRuffle = () => {
    let configuration = {};
    const ruffle = window.RufflePlayer ?? {};
    const given = ruffle.config;
    Object.defineProperty(ruffle, "config", {
      configurable: true,
      enumerable: true,
      get: () => configuration,
      set: (wanted) => {
        configuration = {...defaults, ...wanted, socketProxy: [...(wanted?.socketProxy ?? []), ...socketProxy]};
      },
    });
    ruffle.config = given;
    window.RufflePlayer = ruffle;
  };

  const loadRuffle = () => new Promise((resolve) => {
    const script = document.createElement("script");
    script.src = settings.ruffle;
    script.onload = () => resolve(true);
    script.onerror = () => resolve(false);
    document.head.append(script);
  });

  // Open as long as the page is there. A corvane-play that was started again has another address: the
  // page then hears that it is refused.
  let failures = 0;
  const tell = (state) => dispatchEvent(new CustomEvent("corvane-play", {detail: state}));
  const stay = () => {
    const alive = new WebSocket(socketAddress(settings.alive));
    alive.onopen = () => { failures = 0; tell("open"); };
    alive.onclose = () => {
      failures += 1;
      if (failures > 2) tell("refused");
      setTimeout(stay, 1000);
    };
  };

  // A browser asks a page without an icon for one that is not there.
  const showIcon = () => {
    if (document.querySelector('link[rel~="icon"]')) return;
    const icon = document.createElement("link");
    icon.rel = "icon";
    icon.type = "image/svg+xml";
    icon.href = settings.ruffle.replace("ruffle/ruffle.js", "icon.svg");
    document.head.append(icon);
  };

  addEventListener("DOMContentLoaded", showIcon);
  configureRuffle();
  settings.ready = loadRuffle();
  stay();
}
