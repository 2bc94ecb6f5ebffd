package corvane {
  /** A rectangle in screen pixels. */
  public class Rect {
    public var x:int;
    public var y:int;
    public var width:int;
    public var height:int;

    public function Rect(x:int, y:int, width:int, height:int) {
      this.x = x;
      this.y = y;
      this.width = width;
      this.height = height;
    }
  }
}
