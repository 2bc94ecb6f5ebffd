export {overBridge} from "./bridge.js";
export {CorvaneClient} from "./client.js";
export {Entry} from "./entry.js";
export {Failure} from "./failure.js";
