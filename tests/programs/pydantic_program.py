"""A model that holds values of the host, validated by functions of the host, and its way through JSON."""

from decimal import Decimal
from typing import Any

from pydantic import BaseModel, ConfigDict, ValidationError, field_serializer, field_validator

import ling


class Order(BaseModel):
    model_config = ConfigDict(arbitrary_types_allowed=True)
    name: str
    price: Decimal
    parts: Any

    @field_validator("parts", mode="before")
    @classmethod
    def in_the_host(cls, parts):
        return ling.List(parts)

    @field_serializer("parts")
    def in_python(self, parts):
        return ling.python.to_python(parts)


order = Order(name="pen", price="1.50", parts=[1, 2])
assert ling.kind_of(order.parts) == "list"
again = Order.model_validate_json(order.model_dump_json())
assert again.parts == order.parts and again.price == Decimal("1.50")
try:
    Order(name=3, price="x", parts=[])
except ValidationError as error:
    print("pydantic", error.error_count())
