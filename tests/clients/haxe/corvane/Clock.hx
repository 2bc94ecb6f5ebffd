package corvane;

/** Stands in for the library's clock: the test decides when time is up. **/
class Clock {
  public static var last:Clock;

  public var running = false;

  final ring:() -> Void;

  public function new(ring:() -> Void) {
    this.ring = ring;
    last = this;
  }

  public function start(milliseconds:Int):Void {
    running = true;
  }

  public function stop():Void {
    running = false;
  }

  public function elapse():Void {
    if (running)
      ring();
  }
}
