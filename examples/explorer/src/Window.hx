import flash.Lib;

/** The size of the player's window, in the units that everything is drawn in. **/
class Window {
  /** 1, or less in a window that is too small for everything. **/
  public static function scale():Float {
    var stage = Lib.current.stage;
    return Math.min(1, Math.min(stage.stageWidth / Theme.LEAST_WIDTH, stage.stageHeight / Theme.LEAST_HEIGHT));
  }

  public static function width():Float {
    return Lib.current.stage.stageWidth / scale();
  }

  public static function height():Float {
    return Lib.current.stage.stageHeight / scale();
  }
}
