package corvane;

/** A rectangle in screen pixels. **/
class Rect {
  public final x:Int;
  public final y:Int;
  public final width:Int;
  public final height:Int;

  public function new(x:Int, y:Int, width:Int, height:Int) {
    this.x = x;
    this.y = y;
    this.width = width;
    this.height = height;
  }
}
