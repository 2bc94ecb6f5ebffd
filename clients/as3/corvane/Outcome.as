package corvane {
  /**
   * What a command came to: either a value or a failure, never both.
   * Nothing is thrown: test "ok" first.
   */
  public class Outcome {
    public var ok:Boolean;

    /** The command's result, of the type that the command's comment names; null when ok is false. */
    public var value:*;

    /** Why there is no result; null when ok is true. */
    public var failure:Failure;

    public function Outcome(ok:Boolean, value:*, failure:Failure) {
      this.ok = ok;
      this.value = value;
      this.failure = failure;
    }

    public static function success(value:*):Outcome {
      return new Outcome(true, value, null);
    }

    public static function failed(failure:Failure):Outcome {
      return new Outcome(false, null, failure);
    }
  }
}
